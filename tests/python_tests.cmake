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

# Each file is one ctest entry. Its temporary folders are in the build folder.
set(debian_only test_doctor test_tool test_installer test_certificates test_system_proxy test_sample_host
    test_service_samples test_getting_started test_package test_package_hosts test_fetchcontent test_publisher
    test_wine_crash test_built_dlls test_bindings)
set(portable test_guard_executables test_product_family test_product_service test_languages)
foreach(name IN LISTS portable debian_only)
    if(name IN_LIST debian_only AND NOT MINGW)
        continue()
    endif()
    add_test(NAME python.${name}
        COMMAND "${Python3_EXECUTABLE}" -B -m pytest -q -p no:cacheprovider --basetemp "${PROJECT_BINARY_DIR}/pytest/${name}"
            "${name}.py"
        # pytest would take a [ in a path for the beginning of a test's parameters.
        WORKING_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")
    set_tests_properties(python.${name} PROPERTIES TIMEOUT ${TEST_TIMEOUT}
        ENVIRONMENT "PRODUCT_SERVICES_BIN=$<TARGET_FILE_DIR:ProductServices>;PYTHONUTF8=1"
        ENVIRONMENT_MODIFICATION "TESTS_ADDRESS=set:${TESTS_ADDRESS}")
    if(name IN_LIST debian_only)
        set_tests_properties(python.${name} PROPERTIES LABELS debian)
    endif()
endforeach()
# What has to run on a machine, one test at a time. The slowest tests start first.
function(run_tests_on_machine number)
    foreach(name IN LISTS ARGN)
        if(TEST python.${name})
            set_tests_properties(python.${name} PROPERTIES RESOURCE_LOCK machine_${number} COST 100)
            if(number GREATER 1)
                set_property(TEST python.${name} PROPERTY ENVIRONMENT_MODIFICATION
                    "TESTS_ADDRESS=set:${MACHINE_${number}_ADDRESS};TEST_MACHINE=set:${number}")
            endif()
        endif()
    endforeach()
endfunction()
run_tests_on_machine(1 test_guard_executables test_installer)
run_tests_on_machine(2 test_doctor test_tool)
run_tests_on_machine(3 test_certificates test_system_proxy test_sample_host test_service_samples test_getting_started)

# The packages for the tests that inspect and use them.
if(MINGW)
    add_test(NAME Packages COMMAND "${CMAKE_CPACK_COMMAND}" -B "${PROJECT_BINARY_DIR}/packages"
        WORKING_DIRECTORY "${PROJECT_BINARY_DIR}")
    set_tests_properties(Packages PROPERTIES TIMEOUT ${TEST_TIMEOUT} FIXTURES_SETUP packages LABELS debian COST 100)
    set_tests_properties(python.test_getting_started python.test_package python.test_package_hosts PROPERTIES
        FIXTURES_REQUIRED packages)
endif()
