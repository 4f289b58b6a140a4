# The files that the packages of both builds contain.
include(CMakePackageConfigHelpers)

# Visual Studio's compilers report their architecture; mingw's do not.
set(package_processor "${CMAKE_CXX_COMPILER_ARCHITECTURE_ID}")
if(MINGW)
    set(package_processor x64)
endif()

configure_package_config_file(
    "${CMAKE_CURRENT_LIST_DIR}/ProductServicesConfig.cmake.in" "${PROJECT_BINARY_DIR}/ProductServicesConfig.cmake"
    INSTALL_DESTINATION lib/cmake/ProductServices)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/ProductServicesConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)

install(TARGETS ProductServices ProductServicesGuard RUNTIME DESTINATION bin ARCHIVE DESTINATION lib)
install(TARGETS ProductServicesTool RUNTIME DESTINATION tools)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/product_services" DESTINATION include)
install(FILES
    "${PROJECT_BINARY_DIR}/ProductServicesConfig.cmake" "${PROJECT_BINARY_DIR}/ProductServicesConfigVersion.cmake"
    "${CMAKE_CURRENT_LIST_DIR}/ProductServicesDeploy.cmake" DESTINATION lib/cmake/ProductServices)
configure_file("${CMAKE_CURRENT_LIST_DIR}/product-services-guard.pc.in"
    "${PROJECT_BINARY_DIR}/product-services-guard.pc" @ONLY NEWLINE_STYLE UNIX)
install(FILES "${PROJECT_BINARY_DIR}/product-services-guard.pc" DESTINATION lib/pkgconfig)
install(DIRECTORY "${lang_dir}" DESTINATION .)
install(FILES "${PROJECT_SOURCE_DIR}/CHANGELOG.md" "${PROJECT_SOURCE_DIR}/LICENSE" "${PROJECT_SOURCE_DIR}/SECURITY.md"
    DESTINATION .)

if(MSVC)
    install(FILES $<TARGET_PDB_FILE:ProductServices> $<TARGET_PDB_FILE:ProductServicesGuard> DESTINATION bin)
    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_NAME product-services)
    set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/package")
    include(CPack)
endif()
