# An overlay port that builds the checkout that it is in. This is written after vcpkg's documentation and has not run.
# Visual Studio needs MFC, and Python polib:
#
#   vcpkg install product-services --overlay-ports=CHECKOUT/packaging/vcpkg --overlay-triplets=CHECKOUT/packaging/triplets
#
# The overlay triplet names the product family, and has vcpkg's binary cache notice when the sources change.
vcpkg_check_linkage(ONLY_DYNAMIC_LIBRARY ONLY_DYNAMIC_CRT)
get_filename_component(SOURCE_PATH "${CURRENT_PORT_DIR}/../.." ABSOLUTE)

vcpkg_cmake_configure(SOURCE_PATH "${SOURCE_PATH}" OPTIONS -DBUILD_TESTING=OFF)
vcpkg_cmake_install()
vcpkg_copy_pdbs()
vcpkg_cmake_config_fixup(PACKAGE_NAME ProductServices CONFIG_PATH lib/cmake/ProductServices)
vcpkg_fixup_pkgconfig()

file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/lang"
    "${CURRENT_PACKAGES_DIR}/debug/share")
file(MAKE_DIRECTORY "${CURRENT_PACKAGES_DIR}/share/${PORT}")
file(RENAME "${CURRENT_PACKAGES_DIR}/lang" "${CURRENT_PACKAGES_DIR}/share/${PORT}/lang")
foreach(name CHANGELOG.md LICENSE SECURITY.md)
    file(REMOVE "${CURRENT_PACKAGES_DIR}/${name}" "${CURRENT_PACKAGES_DIR}/debug/${name}")
endforeach()
file(INSTALL "${CMAKE_CURRENT_LIST_DIR}/usage" DESTINATION "${CURRENT_PACKAGES_DIR}/share/${PORT}")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE")
