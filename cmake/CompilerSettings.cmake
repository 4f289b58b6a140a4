# Settings of our own code; third-party headers come in as system headers.
add_library(compiler_settings INTERFACE)
target_compile_definitions(compiler_settings INTERFACE
    UNICODE _UNICODE WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0A00 WINVER=0x0A00
    # GDI+, which MFC's headers include, wants Windows' macros min and max in kits before 10.0.20348. A target with
    # USES_MFC has them, and its sources write (std::max).
    $<$<NOT:$<BOOL:$<TARGET_PROPERTY:USES_MFC>>>:NOMINMAX>)

# Another project that takes this one in may have a compiler that warns of more.
set(warnings_are_errors $<BOOL:${PROJECT_IS_TOP_LEVEL}>)
if(MSVC)
    # Shared MFC, regular DLL.
    set(CMAKE_MFC_FLAG 2)
    target_compile_definitions(compiler_settings INTERFACE _AFXDLL _CRT_SECURE_NO_WARNINGS)
    # C functions may throw: exceptions leave the exports.
    target_compile_options(compiler_settings INTERFACE /W4 $<${warnings_are_errors}:/WX> /utf-8 /permissive- /external:W0 /EHs /EHc-)
    # Every configuration has a PDB, which the package holds. /DEBUG alone would keep what nothing refers to.
    set(without_pdb $<CONFIG:Release,MinSizeRel>)
    target_compile_options(compiler_settings INTERFACE $<${without_pdb}:/Zi>)
    target_link_options(compiler_settings INTERFACE "$<${without_pdb}:/DEBUG;/OPT:REF;/OPT:ICF>")
else()
    target_compile_options(compiler_settings INTERFACE
        -Wall -Wextra -Wpedantic -Wconversion -Wshadow $<${warnings_are_errors}:-Werror>
        -ffunction-sections -fdata-sections -fstack-protector-strong
        # Two builds of the same sources are the same, whatever their folders.
        "-ffile-prefix-map=${PROJECT_BINARY_DIR}=build" "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.")
    # Everything but the system DLLs is linked in.
    target_link_options(compiler_settings INTERFACE
        -static -fstack-protector-strong -Wl,--gc-sections -Wl,--dynamicbase -Wl,--high-entropy-va -Wl,--nxcompat
        -Wl,--no-insert-timestamp)
endif()
