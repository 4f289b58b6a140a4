# The sample host, built against the package that it is in:
#
#     cmake -S samples/host -B sample_host
#     cmake --build sample_host
#
cmake_minimum_required(VERSION 3.16)
project(SampleHost LANGUAGES CXX RC)

find_package(ProductServices CONFIG REQUIRED
    PATHS "${CMAKE_CURRENT_SOURCE_DIR}/../.." NO_CMAKE_FIND_ROOT_PATH)

set(automation "${CMAKE_CURRENT_SOURCE_DIR}/../automation")
# The doctor, with what it takes from the library. The guard is loaded, not linked.
file(GLOB doctor CONFIGURE_DEPENDS doctor/*.cpp library/*.cpp library/*/*.cpp)
add_executable(SampleHost loaded_guard.cpp main.cpp main_window.cpp product_call.cpp user_language.cpp sample_host.rc
    ${doctor} "${automation}/automation.cpp" "${automation}/unattended_user.cpp")
set_target_properties(SampleHost PROPERTIES CXX_STANDARD 20 CXX_STANDARD_REQUIRED ON)
target_include_directories(SampleHost PRIVATE
    "${CMAKE_CURRENT_SOURCE_DIR}" "${automation}" "${CMAKE_CURRENT_SOURCE_DIR}/../../include")
target_include_directories(SampleHost SYSTEM PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}/library")
target_compile_definitions(SampleHost PRIVATE UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0A00)
target_link_libraries(SampleHost PRIVATE user32 gdi32 advapi32 bcrypt crypt32 version winhttp ws2_32)
target_link_options(SampleHost PRIVATE -static -municode)

product_services_deploy(SampleHost)
