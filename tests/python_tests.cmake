# Tests in Python: the tools, the build's checks, and the build output. Tests with the label debian need Wine or Debian's
# tools, or inspect the output of this build; the others run on Windows, too.

if(MINGW)
    add_executable(guard_host guard/guard_host.c)
    target_link_libraries(guard_host PRIVATE project_options ProductServicesGuard crypt32 cryptnet)
    add_executable(publisher_host guard/publisher_host.cpp)
    target_link_libraries(publisher_host PRIVATE project_options import_hook ProductServicesGuard crypt32 ntdll)
    target_include_directories(publisher_host PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}")
    target_link_options(publisher_host PRIVATE -municode)
endif()

file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/pytest")

# add_python_tests(NAME FILE... [DEBIAN] [MACHINE number]): adds the ctest entry python.NAME, which runs files of tests with
# pytest, one after the other. They share fixtures, and pytest starts slowly. With DEBIAN, they need Wine or Debian's tools.
# What uses a machine runs on it alone, and starts first, because it is slow. Temporary folders are in the build folder.
function(add_python_tests name)
    cmake_parse_arguments(PARSE_ARGV 1 tests "DEBIAN" "MACHINE" "")
    if(tests_DEBIAN AND NOT MINGW)
        return()
    endif()
    list(TRANSFORM tests_UNPARSED_ARGUMENTS APPEND .py OUTPUT_VARIABLE files)
    add_test(NAME python.${name}
        COMMAND "${Python3_EXECUTABLE}" -B -m pytest -q -p no:cacheprovider --basetemp "${PROJECT_BINARY_DIR}/pytest/${name}"
            ${files}
        # pytest would take a [ in a path for the beginning of a test's parameters.
        WORKING_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")
    set(environment "TESTS_ADDRESS=set:${TESTS_ADDRESS}")
    if(tests_MACHINE)
        set_tests_properties(python.${name} PROPERTIES RESOURCE_LOCK machine_${tests_MACHINE} COST 100)
        if(tests_MACHINE GREATER 1)
            set(environment "TESTS_ADDRESS=set:${MACHINE_${tests_MACHINE}_ADDRESS};TEST_MACHINE=set:${tests_MACHINE}")
        endif()
    endif()
    set_tests_properties(python.${name} PROPERTIES TIMEOUT ${TEST_TIMEOUT}
        ENVIRONMENT "PRODUCT_SERVICES_BIN=$<TARGET_FILE_DIR:ProductServices>;PYTHONUTF8=1"
        ENVIRONMENT_MODIFICATION "${environment}")
    if(tests_DEBIAN)
        set_tests_properties(python.${name} PROPERTIES LABELS debian)
    endif()
endfunction()

add_python_tests(guard_executables test_guard_executables MACHINE 1)
add_python_tests(installer test_installer DEBIAN MACHINE 1)
add_python_tests(tool test_doctor test_tool DEBIAN MACHINE 2)
add_python_tests(services test_certificates test_system_proxy test_service_samples DEBIAN MACHINE 3)
add_python_tests(hosts test_sample_host test_getting_started test_wine_crash DEBIAN MACHINE 3)
add_python_tests(packages test_package test_package_hosts DEBIAN)
add_python_tests(publisher test_publisher DEBIAN)
add_python_tests(built_files test_built_dlls DEBIAN)
add_python_tests(fetchcontent test_fetchcontent DEBIAN)
add_python_tests(product_service test_product_service)
add_python_tests(family_and_languages test_product_family test_languages)

# The packages for the tests that inspect and use them.
if(MINGW)
    add_test(NAME Packages COMMAND "${CMAKE_CPACK_COMMAND}" -B "${PROJECT_BINARY_DIR}/packages"
        WORKING_DIRECTORY "${PROJECT_BINARY_DIR}")
    set_tests_properties(Packages PROPERTIES TIMEOUT ${TEST_TIMEOUT} FIXTURES_SETUP packages LABELS debian COST 100)
    set_tests_properties(python.hosts python.packages PROPERTIES FIXTURES_REQUIRED packages)
endif()
