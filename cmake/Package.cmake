# The package for host developers, product-services-<version>-windows-x64.zip, and with it a NuGet package for those
# who use Visual Studio, <PRODUCT_FAMILY_ID>.<version>.nupkg.
include(CMakePackageConfigHelpers)

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

configure_package_config_file(
    "${CMAKE_CURRENT_LIST_DIR}/ProductServicesConfig.cmake.in" "${CMAKE_BINARY_DIR}/ProductServicesConfig.cmake"
    INSTALL_DESTINATION lib/cmake/ProductServices)
write_basic_package_version_file("${CMAKE_BINARY_DIR}/ProductServicesConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)

install(TARGETS ProductServices ProductServicesGuard RUNTIME DESTINATION bin ARCHIVE DESTINATION lib)
install(FILES "$<TARGET_FILE:ProductServices>.debug" "$<TARGET_FILE:ProductServicesGuard>.debug" DESTINATION bin)
install(FILES ${msvc_import_libraries} DESTINATION lib)
install(DIRECTORY "${CMAKE_SOURCE_DIR}/include/product_services" DESTINATION include)
install(FILES
    "${CMAKE_BINARY_DIR}/ProductServicesConfig.cmake" "${CMAKE_BINARY_DIR}/ProductServicesConfigVersion.cmake"
    DESTINATION lib/cmake/ProductServices)

install(DIRECTORY "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/lang" DESTINATION .)
install(FILES ${po_files} "${CMAKE_SOURCE_DIR}/languages/product_services.pot" DESTINATION languages)
install(DIRECTORY "${CMAKE_SOURCE_DIR}/samples/minimal_hosts" DESTINATION samples)
install(FILES "${CMAKE_SOURCE_DIR}/samples/installer/sample_host.wxs" DESTINATION samples/installer)
install(FILES "${CMAKE_SOURCE_DIR}/tools/product_service.py" "${CMAKE_SOURCE_DIR}/tools/catalogue.json"
    "${CMAKE_SOURCE_DIR}/tools/language_files.py" "${CMAKE_SOURCE_DIR}/tools/language_file_check.py"
    DESTINATION tools)

install(DIRECTORY "${CMAKE_SOURCE_DIR}/docs" DESTINATION .)
install(FILES "${CMAKE_SOURCE_DIR}/CHANGELOG.md" "${CMAKE_SOURCE_DIR}/LICENSE" "${CMAKE_SOURCE_DIR}/SECURITY.md"
    DESTINATION .)
install(DIRECTORY "${CMAKE_SOURCE_DIR}/build/deps/licenses" DESTINATION .)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME product-services)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_SYSTEM_NAME windows-x64)
set(CPACK_PACKAGE_FILE_NAME "product-services-${PROJECT_VERSION}-windows-x64")
set(CPACK_PACKAGE_DIRECTORY "${CMAKE_BINARY_DIR}/package")
set(PRODUCT_FAMILY_ID "ExampleMaker.ProductServices" CACHE STRING
    "The id of the NuGet package: the service's address is the maker's, and so is the package")
find_program(PYTHON3 python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)
configure_file("${CMAKE_CURRENT_LIST_DIR}/MakeNupkg.cmake.in" "${CMAKE_BINARY_DIR}/MakeNupkg.cmake" @ONLY)
set(CPACK_POST_BUILD_SCRIPTS "${CMAKE_BINARY_DIR}/MakeNupkg.cmake")
include(CPack)
