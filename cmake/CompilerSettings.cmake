# Settings of our own code; third-party headers come in as system headers.
add_library(compiler_settings INTERFACE)
target_compile_definitions(compiler_settings INTERFACE
    UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0A00 WINVER=0x0A00)

if(MSVC)
    # Shared MFC, regular DLL.
    set(CMAKE_MFC_FLAG 2)
    target_compile_definitions(compiler_settings INTERFACE _AFXDLL _CRT_SECURE_NO_WARNINGS)
    # C functions may throw: exceptions leave the exports.
    target_compile_options(compiler_settings INTERFACE /W4 /WX /utf-8 /permissive- /external:W0 /EHs /EHc-)
else()
    target_compile_options(compiler_settings INTERFACE
        -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
        -ffunction-sections -fdata-sections -fstack-protector-strong
        # Two builds of the same sources are the same, whatever their folders.
        "-ffile-prefix-map=${CMAKE_BINARY_DIR}=build" "-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.")
    # Everything but the system DLLs is linked in.
    target_link_options(compiler_settings INTERFACE
        -static -fstack-protector-strong -Wl,--gc-sections -Wl,--dynamicbase -Wl,--high-entropy-va -Wl,--nxcompat
        -Wl,--no-insert-timestamp)
endif()
