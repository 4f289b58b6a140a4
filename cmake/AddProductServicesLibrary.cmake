# What a product family brings is compiled for each; the rest is in product_services_core.
set(PRODUCT_FAMILY_SOURCE "${CMAKE_SOURCE_DIR}/src/platform/family.cpp")

# So is what asks for the state of its module, which MFC tells apart in DLLs and programs.
set(PRODUCT_MODULE_SOURCE "${CMAKE_SOURCE_DIR}/src/host/host_call_scope.cpp")

# add_product_services_library(TARGET NAME HEADER_DIR PICTURE_DIR): the DLL NAME.dll of a product family.
function(add_product_services_library target name header_dir picture_dir)
    add_library(${target} SHARED
        ${PRODUCT_FAMILY_SOURCE}
        ${PRODUCT_MODULE_SOURCE}
        "${CMAKE_SOURCE_DIR}/src/host/application.cpp"
        "${CMAKE_SOURCE_DIR}/src/host/exports.cpp"
        "${CMAKE_SOURCE_DIR}/src/product_services.def"
        "${CMAKE_SOURCE_DIR}/src/ui/product_services.rc")
    target_include_directories(${target} PRIVATE "${header_dir}" "${picture_dir}" "${CMAKE_SOURCE_DIR}/src/ui"
        "${FAMILY_NAMES_DIR}")
    target_link_libraries(${target} PRIVATE product_services_core CURL::libcurl)
    target_compile_definitions(${target} PRIVATE _USRDLL)
    set_target_properties(${target} PROPERTIES OUTPUT_NAME ${name} PREFIX "" USES_MFC ON)
    # The resource compilers do not tell the build what a script includes.
    set_property(SOURCE "${CMAKE_SOURCE_DIR}/src/ui/product_services.rc" TARGET_DIRECTORY ${target}
        APPEND PROPERTY OBJECT_DEPENDS "${CMAKE_SOURCE_DIR}/src/ui/upgrade_dialog.rc"
        "${CMAKE_SOURCE_DIR}/src/ui/resource.h" "${CMAKE_SOURCE_DIR}/include/product_services/version.h")
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
    else()
        # MFC activates a DLL's own manifest for its windows.
        target_link_options(${target} PRIVATE "/MANIFESTDEPENDENCY:type='win32' \
name='Microsoft.Windows.Common-Controls' version='6.0.0.0' processorArchitecture='amd64' \
publicKeyToken='6595b64144ccf1df' language='*'")
    endif()
endfunction()

# Leaves NAME.dll stripped, with its symbols in NAME.dll.debug beside it. Without the date, objcopy would write the
# time of the build into the files.
function(separate_debug_symbols target)
    set(objcopy ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0 ${CMAKE_OBJCOPY})
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${objcopy} --only-keep-debug $<TARGET_FILE:${target}> $<TARGET_FILE:${target}>.debug
        COMMAND ${objcopy} --strip-all --add-gnu-debuglink=$<TARGET_FILE:${target}>.debug $<TARGET_FILE:${target}>
        VERBATIM)
endfunction()
