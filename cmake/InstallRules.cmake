# What a package of either build holds.
include(CMakePackageConfigHelpers)

# As Visual Studio's compilers say it; mingw's say nothing.
set(package_processor "${CMAKE_CXX_COMPILER_ARCHITECTURE_ID}")
if(MINGW)
    set(package_processor x64)
endif()

configure_package_config_file(
    "${CMAKE_CURRENT_LIST_DIR}/ProductServicesConfig.cmake.in" "${CMAKE_BINARY_DIR}/ProductServicesConfig.cmake"
    INSTALL_DESTINATION lib/cmake/ProductServices)
write_basic_package_version_file("${CMAKE_BINARY_DIR}/ProductServicesConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)

install(TARGETS ProductServices ProductServicesGuard RUNTIME DESTINATION bin ARCHIVE DESTINATION lib)
install(DIRECTORY "${CMAKE_SOURCE_DIR}/include/product_services" DESTINATION include)
install(FILES
    "${CMAKE_BINARY_DIR}/ProductServicesConfig.cmake" "${CMAKE_BINARY_DIR}/ProductServicesConfigVersion.cmake"
    DESTINATION lib/cmake/ProductServices)
install(DIRECTORY "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/lang" DESTINATION .)
install(FILES "${CMAKE_SOURCE_DIR}/CHANGELOG.md" "${CMAKE_SOURCE_DIR}/LICENSE" "${CMAKE_SOURCE_DIR}/SECURITY.md"
    DESTINATION .)

if(MSVC)
    install(FILES $<TARGET_PDB_FILE:ProductServices> $<TARGET_PDB_FILE:ProductServicesGuard> DESTINATION bin)
    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_NAME product-services)
    set(CPACK_PACKAGE_DIRECTORY "${CMAKE_BINARY_DIR}/package")
    include(CPack)
endif()
