# The constants of the product family are compiled for each family. The rest is in product_services_core.
set(PER_FAMILY_SOURCE "${PROJECT_SOURCE_DIR}/src/platform/family.cpp")
# The call frame is compiled for each module, because MFC's module state differs between DLLs and programs.
set(PER_MODULE_SOURCE "${PROJECT_SOURCE_DIR}/src/host/host_call_scope.cpp")
set(NORMALIZE_PDB "${CMAKE_CURRENT_LIST_DIR}/normalize_pdb.py")

# add_product_services_library(TARGET NAME HEADER_DIR IMAGE_DIR): the DLL NAME.dll of a product family, with the headers
# that make_family_headers has written to HEADER_DIR.
function(add_product_services_library target name header_dir image_dir)
    set(src "${PROJECT_SOURCE_DIR}/src")
    add_library(${target} SHARED "${src}/host/exports.cpp" "${src}/product_services.def")
    target_link_libraries(${target} PRIVATE product_services_core)
    finish_family_library(${target} ${name} "${src}/ui/product_services.rc" "${header_dir}" "${image_dir}")
endfunction()

# add_guard_library(TARGET NAME HEADER_DIR IMAGE_DIR): the same with guarded calls.
function(add_guard_library target name header_dir image_dir)
    set(guard "${PROJECT_SOURCE_DIR}/guard")
    add_library(${target} SHARED "${guard}/calls/guarded_calls.cpp" "${guard}/product_services_guard.def")
    target_link_libraries(${target} PRIVATE product_services_guard_core)
    finish_family_library(${target} ${name} "${guard}/product_services_guard.rc" "${header_dir}" "${image_dir}")
endfunction()

# Adds what both DLLs have: the family, MFC and libcurl.
function(finish_family_library target name resource_script header_dir image_dir)
    target_sources(${target} PRIVATE ${PER_FAMILY_SOURCE} ${PER_MODULE_SOURCE}
        "${PROJECT_SOURCE_DIR}/src/host/application.cpp" "${resource_script}")
    target_include_directories(${target} PRIVATE "${header_dir}" "${image_dir}"
        "${PROJECT_SOURCE_DIR}/src/ui" "${PROJECT_SOURCE_DIR}/product_family")
    target_link_libraries(${target} PRIVATE CURL::libcurl)
    target_compile_definitions(${target} PRIVATE _USRDLL)
    set_target_properties(${target} PROPERTIES OUTPUT_NAME ${name} PREFIX "" USES_MFC ON)
    family_image_files(images "${image_dir}")
    add_rc_dependencies(${target} "${resource_script}" "${header_dir}" ${images}
        "${PROJECT_SOURCE_DIR}/src/ui/library.rc" "${PROJECT_SOURCE_DIR}/src/ui/upgrade_dialog.rc"
        "${PROJECT_SOURCE_DIR}/src/ui/resource.h")
    if(MINGW)
        target_sources(${target} PRIVATE
            "${PROJECT_SOURCE_DIR}/compat/mfc/dll_main.cpp"
            "${PROJECT_SOURCE_DIR}/compat/mingw/libstdcxx_overrides.cpp")
        separate_debug_symbols(${target})
    else()
        # MFC uses the manifest in the DLL for its windows.
        target_link_options(${target} PRIVATE "/MANIFESTDEPENDENCY:type='win32' \
name='Microsoft.Windows.Common-Controls' version='6.0.0.0' processorArchitecture='*' \
publicKeyToken='6595b64144ccf1df' language='*'")
    endif()
endfunction()

# add_rc_dependencies(TARGET SCRIPT HEADER_DIR FILE...): makes a resource script depend on the files that it includes, and on
# the files of the version resource, because the resource compilers do not report them.
function(add_rc_dependencies target script header_dir)
    set_property(SOURCE "${script}" TARGET_DIRECTORY ${target} APPEND PROPERTY OBJECT_DEPENDS ${ARGN}
        "${header_dir}/family_names.h" "${PROJECT_SOURCE_DIR}/product_family/version_info.rc"
        "${PROJECT_SOURCE_DIR}/include/product_services/version.h")
endfunction()

# Strips NAME.dll and puts its symbols into NAME.dll.debug and NAME.pdb in the same folder. GNU ld writes the names of
# functions into a PDB unless -s is among the flags. Without SOURCE_DATE_EPOCH, objcopy would write the time of the build.
function(separate_debug_symbols target)
    set(pdb "$<TARGET_FILE_DIR:${target}>/$<TARGET_FILE_BASE_NAME:${target}>.pdb")
    set(objcopy ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0 ${CMAKE_OBJCOPY})
    target_link_options(${target} PRIVATE "SHELL:-Xlinker \"--pdb=${pdb}\"") # -Wl would take a comma in it for an end
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND "${Python3_EXECUTABLE}" -B "${NORMALIZE_PDB}" "${pdb}"
            "${PROJECT_BINARY_DIR}=build" "${PROJECT_SOURCE_DIR}=."
        COMMAND ${objcopy} --only-keep-debug $<TARGET_FILE:${target}> $<TARGET_FILE:${target}>.debug
        COMMAND ${objcopy} --strip-all --add-gnu-debuglink=$<TARGET_FILE:${target}>.debug $<TARGET_FILE:${target}>
        VERBATIM)
endfunction()
