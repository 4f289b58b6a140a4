# libcurl and the JSON library: from build/deps (setup.sh) for mingw, from vcpkg for Visual Studio.
find_package(CURL CONFIG QUIET)
if(NOT TARGET CURL::libcurl)
    message(FATAL_ERROR "libcurl for Windows is missing: run ./setup.sh first, or use vcpkg with Visual Studio.")
endif()

find_path(NLOHMANN_JSON_INCLUDE_DIR nlohmann/json.hpp NO_CMAKE_FIND_ROOT_PATH)
if(NOT NLOHMANN_JSON_INCLUDE_DIR)
    message(FATAL_ERROR "nlohmann-json is missing: run ./setup.sh first, or use vcpkg with Visual Studio.")
endif()

add_library(json_headers INTERFACE)
target_include_directories(json_headers SYSTEM INTERFACE "${NLOHMANN_JSON_INCLUDE_DIR}")

# The headers alone, so that a test can put its own functions in libcurl's place.
add_library(curl_headers INTERFACE)
target_include_directories(curl_headers SYSTEM INTERFACE
    $<TARGET_PROPERTY:CURL::libcurl,INTERFACE_INCLUDE_DIRECTORIES>)
target_compile_definitions(curl_headers INTERFACE
    $<TARGET_PROPERTY:CURL::libcurl,INTERFACE_COMPILE_DEFINITIONS>)
