# Tests in Python: the tools, the build's checks, and the build output. Tests with the label debian need Wine or Debian's
# tools, or inspect the output of this build; the others run on Windows, too.

# The sample family's DLLs with a service address that only this build folder uses, and programs in the same folder.
set(sample_family_dir "${PROJECT_SOURCE_DIR}/product_family/sample")
set(https_sample_dir "${PROJECT_BINARY_DIR}/https_sample")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${sample_family_dir}/product_family.json")
file(READ "${sample_family_dir}/product_family.json" json)
string(JSON json SET "${json}" service_base_address "\"https://${TESTS_ADDRESS}:18443\"")
file(WRITE "${https_sample_dir}/family/product_family.json" "${json}")
make_family_headers("${https_sample_dir}/family/product_family.json" "${https_sample_dir}/family")
add_product_services_library(HttpsProductServices ProductServices "${https_sample_dir}/family" "${sample_family_dir}")
add_guard_library(HttpsProductServicesGuard ProductServicesGuard "${https_sample_dir}/family" "${sample_family_dir}")
set_target_properties(HttpsProductServices HttpsProductServicesGuard PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY "$<1:${https_sample_dir}>" ARCHIVE_OUTPUT_DIRECTORY "$<1:${https_sample_dir}>")
target_include_directories(HttpsProductServicesGuard INTERFACE "${PROJECT_SOURCE_DIR}/include")

# The tool with that address, the sample host and the language files.
add_product_services_tool(HttpsProductServicesTool "${https_sample_dir}/family" "${sample_family_dir}")
set_target_properties(HttpsProductServicesTool PROPERTIES RUNTIME_OUTPUT_DIRECTORY "$<1:${https_sample_dir}>")
add_custom_command(OUTPUT "${https_sample_dir}/SampleHost.exe"
    COMMAND ${CMAKE_COMMAND} -E copy_directory "${lang_dir}" "${https_sample_dir}/lang"
    COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_FILE:SampleHost> "${https_sample_dir}"
    DEPENDS SampleHost "${languages_stamp}" VERBATIM)
add_custom_target(HttpsSampleHost ALL DEPENDS "${https_sample_dir}/SampleHost.exe")

if(MINGW)
    add_executable(guard_host guard/guard_host.c)
    target_link_libraries(guard_host PRIVATE project_options HttpsProductServicesGuard crypt32 cryptnet)
    set_target_properties(guard_host PROPERTIES RUNTIME_OUTPUT_DIRECTORY "$<1:${https_sample_dir}>")
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
        ENVIRONMENT "PRODUCT_SERVICES_BIN=$<TARGET_FILE_DIR:ProductServices>;TESTS_ADDRESS=${TESTS_ADDRESS};PYTHONUTF8=1")
    if(name IN_LIST debian_only)
        set_tests_properties(python.${name} PROPERTIES LABELS debian)
    endif()
endforeach()
# These tests share the service's port, the sample product's record or the keyboard focus, so they run one at a time. They
# are the slowest and therefore start first.
set_tests_properties(python.test_guard_executables PROPERTIES RESOURCE_LOCK "tests_product_family;display")
foreach(name test_tool test_installer test_sample_host)
    if(TEST python.${name})
        set_tests_properties(python.${name} PROPERTIES RESOURCE_LOCK "sample_product;display" COST 100)
    endif()
endforeach()
foreach(name test_doctor test_certificates test_system_proxy test_service_samples test_getting_started)
    if(TEST python.${name})
        set_tests_properties(python.${name} PROPERTIES RESOURCE_LOCK sample_product COST 100)
    endif()
endforeach()

# The packages for the tests that inspect and use them.
if(MINGW)
    add_test(NAME Packages COMMAND "${CMAKE_CPACK_COMMAND}" -B "${PROJECT_BINARY_DIR}/packages"
        WORKING_DIRECTORY "${PROJECT_BINARY_DIR}")
    set_tests_properties(Packages PROPERTIES TIMEOUT ${TEST_TIMEOUT} FIXTURES_SETUP packages LABELS debian COST 100)
    set_tests_properties(python.test_getting_started python.test_package python.test_package_hosts PROPERTIES
        FIXTURES_REQUIRED packages)
endif()
