# Compiler and linker options for the code of this project. Third-party headers are included as system headers.
add_library(project_options INTERFACE)
target_compile_definitions(project_options INTERFACE
    UNICODE _UNICODE WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0A00 WINVER=0x0A00
    # GDI+, which MFC's headers include, needs Windows' macros min and max in SDKs before 10.0.20348. A target with USES_MFC
    # therefore keeps them, and its sources write (std::max).
    $<$<NOT:$<BOOL:$<TARGET_PROPERTY:USES_MFC>>>:NOMINMAX>)

# A project that includes this one may use a compiler with more warnings.
set(warnings_are_errors $<BOOL:${PROJECT_IS_TOP_LEVEL}>)
if(MSVC)
    # Shared MFC, regular DLL.
    set(CMAKE_MFC_FLAG 2)
    target_compile_definitions(project_options INTERFACE _AFXDLL _CRT_SECURE_NO_WARNINGS)
    # C functions may throw, because exceptions propagate out of the exports.
    target_compile_options(project_options INTERFACE /W4 $<${warnings_are_errors}:/WX> /utf-8 /permissive- /external:W0 /EHs /EHc-)
    # Every configuration has a PDB, which is part of the package. Without /OPT, /DEBUG would keep unreferenced functions.
    set(configs_without_pdb $<CONFIG:Release,MinSizeRel>)
    target_compile_options(project_options INTERFACE $<${configs_without_pdb}:/Zi>)
    target_link_options(project_options INTERFACE "$<${configs_without_pdb}:/DEBUG;/OPT:REF;/OPT:ICF>")
else()
    target_compile_options(project_options INTERFACE
        -Wall -Wextra -Wpedantic -Wconversion -Wshadow $<${warnings_are_errors}:-Werror>
        -ffunction-sections -fdata-sections -fstack-protector-strong
        # Makes builds reproducible in any folder.
        "-ffile-prefix-map=${PROJECT_BINARY_DIR}=build" "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.")
    # Everything except the system DLLs is linked statically.
    target_link_options(project_options INTERFACE
        -static -fstack-protector-strong -Wl,--gc-sections -Wl,--dynamicbase -Wl,--high-entropy-va -Wl,--nxcompat
        -Wl,--no-insert-timestamp)
endif()
