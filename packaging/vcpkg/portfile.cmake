# An overlay port that builds the checkout that contains it. It needs Visual Studio with MFC, and Python with polib. It follows
# vcpkg's documentation and has not been tested yet:
#
#   vcpkg install product-services --overlay-ports=CHECKOUT/packaging/vcpkg --overlay-triplets=CHECKOUT/packaging/triplets
#
# The overlay triplet specifies the product family, and makes vcpkg's binary cache detect changes of the sources.
vcpkg_check_linkage(ONLY_DYNAMIC_LIBRARY ONLY_DYNAMIC_CRT)
get_filename_component(SOURCE_PATH "${CURRENT_PORT_DIR}/../.." ABSOLUTE)

vcpkg_cmake_configure(SOURCE_PATH "${SOURCE_PATH}" OPTIONS -DBUILD_TESTING=OFF)
vcpkg_cmake_install()
vcpkg_copy_pdbs()
vcpkg_cmake_config_fixup(PACKAGE_NAME ProductServices CONFIG_PATH lib/cmake/ProductServices)
vcpkg_fixup_pkgconfig()
vcpkg_copy_tools(TOOL_NAMES ProductServicesTool SEARCH_DIR "${CURRENT_PACKAGES_DIR}/tools")
file(REMOVE "${CURRENT_PACKAGES_DIR}/tools/ProductServicesTool.exe")

file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/lang"
    "${CURRENT_PACKAGES_DIR}/debug/share" "${CURRENT_PACKAGES_DIR}/debug/tools")
file(MAKE_DIRECTORY "${CURRENT_PACKAGES_DIR}/share/${PORT}")
file(RENAME "${CURRENT_PACKAGES_DIR}/lang" "${CURRENT_PACKAGES_DIR}/share/${PORT}/lang")
foreach(name CHANGELOG.md LICENSE SECURITY.md)
    file(REMOVE "${CURRENT_PACKAGES_DIR}/${name}" "${CURRENT_PACKAGES_DIR}/debug/${name}")
endforeach()
file(INSTALL "${CMAKE_CURRENT_LIST_DIR}/usage" DESTINATION "${CURRENT_PACKAGES_DIR}/share/${PORT}")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE")
