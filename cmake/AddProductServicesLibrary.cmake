# What a product family brings is compiled for each; the rest is in product_services_core.
set(PRODUCT_FAMILY_SOURCE "${CMAKE_SOURCE_DIR}/src/platform/family.cpp")

# add_product_services_library(TARGET NAME HEADER_DIR PICTURE_DIR): the DLL NAME.dll of a product family.
function(add_product_services_library target name header_dir picture_dir)
    add_library(${target} SHARED
        ${PRODUCT_FAMILY_SOURCE}
        "${CMAKE_SOURCE_DIR}/src/host/application.cpp"
        "${CMAKE_SOURCE_DIR}/src/host/exports.cpp"
        "${CMAKE_SOURCE_DIR}/src/product_services.def"
        "${CMAKE_SOURCE_DIR}/src/ui/product_services.rc")
    target_include_directories(${target} PRIVATE "${header_dir}" "${picture_dir}" "${CMAKE_SOURCE_DIR}/src/ui"
        "${FAMILY_NAMES_DIR}")
    target_link_libraries(${target} PRIVATE product_services_core CURL::libcurl)
    target_compile_definitions(${target} PRIVATE _USRDLL)
    set_target_properties(${target} PROPERTIES OUTPUT_NAME ${name} PREFIX "")
    foreach(picture library.ico background_332.bmp background_333.bmp background_335.bmp background_343.bmp
            background_1077.bmp)
        set_property(SOURCE "${CMAKE_SOURCE_DIR}/src/ui/product_services.rc" TARGET_DIRECTORY ${target}
            APPEND PROPERTY OBJECT_DEPENDS "${picture_dir}/${picture}")
    endforeach()
    if(MINGW)
        target_sources(${target} PRIVATE
            "${CMAKE_SOURCE_DIR}/compat/mfc/dll_main.cpp"
            "${CMAKE_SOURCE_DIR}/compat/mingw/runtime.cpp")
        separate_debug_symbols(${target})
    endif()
endfunction()

# Leaves NAME.dll stripped, with its symbols in NAME.dll.debug beside it.
function(separate_debug_symbols target)
    find_program(OBJCOPY x86_64-w64-mingw32-objcopy REQUIRED)
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${OBJCOPY} --only-keep-debug $<TARGET_FILE:${target}> $<TARGET_FILE:${target}>.debug
        COMMAND ${OBJCOPY} --strip-all --add-gnu-debuglink=$<TARGET_FILE:${target}>.debug $<TARGET_FILE:${target}>
        VERBATIM)
endfunction()
