# Builds the sample host with the package that contains it:
#
#     cmake -S samples/host -B sample_host
#     cmake --build sample_host
#
cmake_minimum_required(VERSION 3.16)
project(SampleHost LANGUAGES CXX RC)

find_package(ProductServices CONFIG REQUIRED
    PATHS "${CMAKE_CURRENT_SOURCE_DIR}/../.." NO_CMAKE_FIND_ROOT_PATH)

add_executable(SampleHost WIN32 daily_check.cpp main.cpp main_window.cpp update_calls.cpp user_language.cpp
    sample_host.rc)
set_target_properties(SampleHost PROPERTIES CXX_STANDARD 20 CXX_STANDARD_REQUIRED ON)
target_compile_definitions(SampleHost PRIVATE UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0A00)
target_link_libraries(SampleHost PRIVATE ProductServices::Guard advapi32 ole32 shell32 user32)
if(MINGW)
    target_link_options(SampleHost PRIVATE -static -municode)
else()
    # The manifest comes from sample_host.rc.
    target_link_options(SampleHost PRIVATE /MANIFEST:NO)
endif()

product_services_deploy(SampleHost)
