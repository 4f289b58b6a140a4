# libcurl, nlohmann-json and, for the tool's options, CLI11. They come from build/deps (setup.sh) for mingw, from vcpkg for
# Visual Studio, or from a project that includes this one: its targets, or what find_package finds with its settings.
set(install_hint "run ./setup.sh first, or use vcpkg with Visual Studio.")
if(NOT PROJECT_IS_TOP_LEVEL)
    set(install_hint "set CURL_DIR and NLOHMANN_JSON_INCLUDE_DIR, or define the targets CURL::libcurl (static, with \
Schannel) and nlohmann_json::nlohmann_json before ProductServices.")
endif()
if(NOT TARGET CURL::libcurl)
    find_package(CURL CONFIG QUIET)
endif()
if(NOT TARGET CURL::libcurl)
    message(FATAL_ERROR "libcurl for Windows not found: ${install_hint}")
endif()

if(TARGET nlohmann_json::nlohmann_json)
    set(NLOHMANN_JSON_INCLUDE_DIR $<TARGET_PROPERTY:nlohmann_json::nlohmann_json,INTERFACE_INCLUDE_DIRECTORIES>)
else()
    # /usr/include is not searched, because its other headers are not for Windows.
    find_path(NLOHMANN_JSON_INCLUDE_DIR nlohmann/json.hpp
        NO_CMAKE_FIND_ROOT_PATH NO_CMAKE_SYSTEM_PATH NO_SYSTEM_ENVIRONMENT_PATH)
endif()
if(NOT NLOHMANN_JSON_INCLUDE_DIR)
    message(FATAL_ERROR "nlohmann-json not found: ${install_hint}")
endif()

# The command-line tool is not built as part of another project.
if(PROJECT_IS_TOP_LEVEL)
    find_path(CLI11_INCLUDE_DIR CLI/CLI.hpp HINTS "${PROJECT_SOURCE_DIR}/build/deps/cli11"
        NO_CMAKE_FIND_ROOT_PATH NO_CMAKE_SYSTEM_PATH NO_SYSTEM_ENVIRONMENT_PATH)
    if(NOT CLI11_INCLUDE_DIR)
        message(FATAL_ERROR "CLI11 not found: ${install_hint}")
    endif()
    add_library(cli11_headers INTERFACE)
    target_include_directories(cli11_headers SYSTEM INTERFACE "${CLI11_INCLUDE_DIR}")
endif()

add_library(json_headers INTERFACE)
target_include_directories(json_headers SYSTEM INTERFACE "${NLOHMANN_JSON_INCLUDE_DIR}")

# Only the headers, so that a test can replace libcurl's functions.
add_library(curl_headers INTERFACE)
target_include_directories(curl_headers SYSTEM INTERFACE
    $<TARGET_PROPERTY:CURL::libcurl,INTERFACE_INCLUDE_DIRECTORIES>)
target_compile_definitions(curl_headers INTERFACE
    $<TARGET_PROPERTY:CURL::libcurl,INTERFACE_COMPILE_DEFINITIONS>)
