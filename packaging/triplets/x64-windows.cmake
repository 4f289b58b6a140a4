# vcpkg's triplet of this name, with settings for the overlay port in ../vcpkg. Other ports are built as usual.
set(VCPKG_TARGET_ARCHITECTURE x64)
set(VCPKG_CRT_LINKAGE dynamic)
set(VCPKG_LIBRARY_LINKAGE dynamic)

if(PORT STREQUAL "product-services")
    get_filename_component(checkout "${CMAKE_CURRENT_LIST_DIR}/../.." ABSOLUTE)
    set(family "${checkout}/product_family/sample") # put the folder of your product family here
    set(VCPKG_CMAKE_CONFIGURE_OPTIONS "-DPRODUCT_FAMILY_DIR=${family}")

    # vcpkg hashes the files in the folder of a port. This port is also built from these files.
    file(GLOB_RECURSE VCPKG_HASH_ADDITIONAL_FILES
        "${checkout}/cmake/*" "${checkout}/compat/*" "${checkout}/guard/*" "${checkout}/include/*"
        "${checkout}/languages/*" "${checkout}/samples/*" "${checkout}/src/*" "${checkout}/tools/*" "${family}/*")
    foreach(name CHANGELOG.md CMakeLists.txt LICENSE SECURITY.md vcpkg.json)
        list(APPEND VCPKG_HASH_ADDITIONAL_FILES "${checkout}/${name}")
    endforeach()
    list(FILTER VCPKG_HASH_ADDITIONAL_FILES EXCLUDE REGEX "/__pycache__/")
endif()
