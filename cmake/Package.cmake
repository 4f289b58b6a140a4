# The package for host developers: product-services-<version>-windows-x64.zip.
include(CMakePackageConfigHelpers)

set(def_file "${CMAKE_SOURCE_DIR}/src/product_services.def")

# Visual Studio's linker gets an import library of its own, with the same two names.
find_program(LLVM_DLLTOOL llvm-dlltool REQUIRED)
set(msvc_import_library "${CMAKE_BINARY_DIR}/ProductServices.lib")
add_custom_command(OUTPUT "${msvc_import_library}"
    COMMAND ${LLVM_DLLTOOL} -m i386:x86-64 -D ProductServices.dll -d "${def_file}" -l "${msvc_import_library}"
    DEPENDS "${def_file}" VERBATIM)
add_custom_target(msvc_import_library ALL DEPENDS "${msvc_import_library}")

configure_package_config_file(
    "${CMAKE_CURRENT_LIST_DIR}/ProductServicesConfig.cmake.in" "${CMAKE_BINARY_DIR}/ProductServicesConfig.cmake"
    INSTALL_DESTINATION lib/cmake/ProductServices)
write_basic_package_version_file("${CMAKE_BINARY_DIR}/ProductServicesConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)

install(TARGETS ProductServices RUNTIME DESTINATION bin ARCHIVE DESTINATION lib)
install(FILES "$<TARGET_FILE:ProductServices>.debug" DESTINATION bin)
install(FILES "${msvc_import_library}" DESTINATION lib)
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
include(CPack)
