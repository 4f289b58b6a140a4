# Tests in Python: the tools, the build's checks, and what was built. The label debian is for those that need Wine or
# tools of Debian, or look into what this very build made; the others run on Windows too.

# The sample family's libraries at an address of this build folder's own, with programs beside them.
set(sample_family_dir "${PROJECT_SOURCE_DIR}/product_family/sample")
set(over_tls_dir "${PROJECT_BINARY_DIR}/over_tls")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${sample_family_dir}/product_family.json")
file(READ "${sample_family_dir}/product_family.json" json)
string(JSON json SET "${json}" service_base_address "\"https://${TESTS_ADDRESS}:18443\"")
file(WRITE "${over_tls_dir}/family/product_family.json" "${json}")
make_family_headers("${over_tls_dir}/family/product_family.json" "${over_tls_dir}/family")
add_product_services_library(ProductServicesOverTls ProductServices "${over_tls_dir}/family" "${sample_family_dir}")
add_guard_library(ProductServicesGuardOverTls ProductServicesGuard "${over_tls_dir}/family" "${sample_family_dir}")
set_target_properties(ProductServicesOverTls ProductServicesGuardOverTls PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY "$<1:${over_tls_dir}>" ARCHIVE_OUTPUT_DIRECTORY "$<1:${over_tls_dir}>")
target_include_directories(ProductServicesGuardOverTls INTERFACE "${PROJECT_SOURCE_DIR}/include")

# The tool of that address, the sample host, and the language files.
add_product_services_tool(ToolOverTls "${over_tls_dir}/family" "${sample_family_dir}")
set_target_properties(ToolOverTls PROPERTIES RUNTIME_OUTPUT_DIRECTORY "$<1:${over_tls_dir}>")
add_custom_command(OUTPUT "${over_tls_dir}/SampleHost.exe"
    COMMAND ${CMAKE_COMMAND} -E copy_directory "${lang_dir}" "${over_tls_dir}/lang"
    COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_FILE:SampleHost> "${over_tls_dir}"
    DEPENDS SampleHost "${languages_stamp}" VERBATIM)
add_custom_target(sample_host_over_tls ALL DEPENDS "${over_tls_dir}/SampleHost.exe")

if(MINGW)
    add_executable(guard_host guard/guard_host.c)
    target_link_libraries(guard_host PRIVATE compiler_settings ProductServicesGuardOverTls crypt32 cryptnet)
    set_target_properties(guard_host PROPERTIES RUNTIME_OUTPUT_DIRECTORY "$<1:${over_tls_dir}>")
    add_executable(publisher_host guard/publisher_host.cpp)
    target_link_libraries(publisher_host PRIVATE compiler_settings import_hook ProductServicesGuard crypt32 ntdll)
    target_include_directories(publisher_host PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}")
    target_link_options(publisher_host PRIVATE -municode)
endif()

file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/pytest")

# Each file is run with the folder of the built programs at hand and its own folders in the build. The longest first.
set(on_debian test_doctor test_tool test_installer test_package test_certificates test_system_proxy test_sample_host test_consumer
    test_publisher test_service_samples test_crash test_library_file test_documents test_other_languages)
set(everywhere test_guard_programs test_product_family test_product_service test_languages)
foreach(name IN LISTS everywhere on_debian)
    if(name IN_LIST on_debian AND NOT MINGW)
        continue()
    endif()
    add_test(NAME python.${name}
        COMMAND "${Python3_EXECUTABLE}" -B -m pytest -q -p no:cacheprovider --basetemp "${PROJECT_BINARY_DIR}/pytest/${name}"
            "${CMAKE_CURRENT_SOURCE_DIR}/${name}.py")
    set_tests_properties(python.${name} PROPERTIES TIMEOUT 60
        ENVIRONMENT "PRODUCT_SERVICES_BIN=$<TARGET_FILE_DIR:ProductServices>;TESTS_ADDRESS=${TESTS_ADDRESS};PYTHONUTF8=1")
    if(name IN_LIST on_debian)
        set_tests_properties(python.${name} PROPERTIES LABELS debian)
    endif()
endforeach()
# The service of the sample family has one port, the sample product one record, and the display one window that gets the
# keys. These wait for each other, so they begin before the rest.
set_tests_properties(python.test_guard_programs PROPERTIES RESOURCE_LOCK "tests_product_family;display")
foreach(name test_tool test_installer test_sample_host)
    if(TEST python.${name})
        set_tests_properties(python.${name} PROPERTIES RESOURCE_LOCK "sample_product;display" COST 100)
    endif()
endforeach()
foreach(name test_doctor test_package test_certificates test_system_proxy test_service_samples)
    if(TEST python.${name})
        set_tests_properties(python.${name} PROPERTIES RESOURCE_LOCK sample_product COST 100)
    endif()
endforeach()
