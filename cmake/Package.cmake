# The package for host developers, product-services-<package_id>-<version>-windows-x64.zip, and with it a NuGet package
# for those who use Visual Studio, <package_id>.<version>.nupkg. package_id is the product family's.
set(FAMILY_JSON "${PRODUCT_FAMILY_DIR}/product_family.json")
set(SAMPLE_FAMILY_JSON "${CMAKE_SOURCE_DIR}/product_family/sample/product_family.json")
file(READ "${FAMILY_JSON}" json)
string(JSON package_id GET "${json}" package_id)

# Visual Studio's linker gets import libraries of its own, with the same names.
find_program(LLVM_DLLTOOL llvm-dlltool REQUIRED)
set(msvc_import_libraries)
foreach(definition src/product_services:ProductServices guard/product_services_guard:ProductServicesGuard)
    string(REGEX REPLACE ":.*" ".def" def_file "${CMAKE_SOURCE_DIR}/${definition}")
    string(REGEX REPLACE ".*:" "" name "${definition}")
    add_custom_command(OUTPUT "${CMAKE_BINARY_DIR}/${name}.lib"
        COMMAND ${LLVM_DLLTOOL} -m i386:x86-64 -D ${name}.dll -d "${def_file}" -l "${CMAKE_BINARY_DIR}/${name}.lib"
        DEPENDS "${def_file}" VERBATIM)
    list(APPEND msvc_import_libraries "${CMAKE_BINARY_DIR}/${name}.lib")
endforeach()
add_custom_target(msvc_import_library ALL DEPENDS ${msvc_import_libraries})

install(FILES "$<TARGET_FILE:ProductServices>.debug" "$<TARGET_FILE:ProductServicesGuard>.debug" DESTINATION bin)
install(FILES ${msvc_import_libraries} DESTINATION lib)

install(FILES ${po_files} "${CMAKE_SOURCE_DIR}/languages/product_services.pot" DESTINATION languages)
install(PROGRAMS "$<TARGET_FILE:SampleHost>" DESTINATION bin)
install(DIRECTORY "${CMAKE_SOURCE_DIR}/samples/minimal_hosts" "${CMAKE_SOURCE_DIR}/samples/host"
    "${CMAKE_SOURCE_DIR}/samples/automation" "${CMAKE_SOURCE_DIR}/samples/other_languages"
    DESTINATION samples PATTERN automation/CMakeLists.txt EXCLUDE)
install(FILES "${CMAKE_CURRENT_LIST_DIR}/package/SampleHost.cmake" DESTINATION samples/host RENAME CMakeLists.txt)
install(FILES "${PRODUCT_FAMILY_DIR}/library.ico" DESTINATION samples/host)
install(FILES "${CMAKE_SOURCE_DIR}/samples/installer/sample_host.wxs"
    "${CMAKE_SOURCE_DIR}/samples/installer/sample_host_all_users.wxs"
    "${CMAKE_SOURCE_DIR}/samples/installer/sample_host.iss" "${CMAKE_SOURCE_DIR}/samples/installer/sample_host.nsi"
    DESTINATION samples/installer)
install(FILES "${CMAKE_SOURCE_DIR}/tools/product_service.py" "${CMAKE_SOURCE_DIR}/tools/catalogue.json"
    DESTINATION tools)
install(FILES ${tool_files} DESTINATION tools)

install(FILES "${CMAKE_CURRENT_LIST_DIR}/package/README.md" DESTINATION .)
foreach(document host-guide installers language-files service troubleshooting versions)
    install(FILES "${CMAKE_SOURCE_DIR}/docs/${document}.md" DESTINATION docs)
endforeach()
install(DIRECTORY "${CMAKE_SOURCE_DIR}/build/deps/licenses" DESTINATION .)
# All texts of the package are there.
install(CODE "set(package \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}\")
    execute_process(COMMAND [==[${CMAKE_OBJCOPY}]==] --strip-all \"\${package}/bin/SampleHost.exe\"
        COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND [==[${Python3_EXECUTABLE}]==] -B [==[${CMAKE_CURRENT_LIST_DIR}/family_texts.py]==]
        [==[${SAMPLE_FAMILY_JSON}]==] [==[${FAMILY_JSON}]==] \"\${package}\" COMMAND_ERROR_IS_FATAL ANY)")
# This one names the family already.
install(FILES "${FAMILY_HEADERS_DIR}/sample_product.h" DESTINATION samples/host)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME product-services)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_SYSTEM_NAME windows-x64)
set(CPACK_PACKAGE_FILE_NAME "product-services-${package_id}-${PROJECT_VERSION}-windows-x64")
set(CPACK_PACKAGE_DIRECTORY "${CMAKE_BINARY_DIR}/package")
configure_file("${CMAKE_CURRENT_LIST_DIR}/MakeNupkg.cmake.in" "${CMAKE_BINARY_DIR}/MakeNupkg.cmake" @ONLY)
set(CPACK_POST_BUILD_SCRIPTS "${CMAKE_BINARY_DIR}/MakeNupkg.cmake")
include(CPack)
