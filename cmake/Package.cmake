# The package for host developers, product-services-<PRODUCT_FAMILY_ID>-<version>-windows-x64.zip, and with it a NuGet
# package for those who use Visual Studio, <PRODUCT_FAMILY_ID>.<version>.nupkg.
find_program(PYTHON3 python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)

# What the texts of the package say of the family, and what they say in the sources: by the compiler that reads the
# headers, out of its object files.
set(sample_family_dir "${CMAKE_SOURCE_DIR}/product_family/sample")
set(FAMILY_PAIRS "${CMAKE_BINARY_DIR}/family_pairs.json")
set(FAMILY_TEXTS "${CMAKE_CURRENT_LIST_DIR}/family_texts.py")
set(family_values)
foreach(family sample product)
    add_library(${family}_family_values OBJECT "${CMAKE_CURRENT_LIST_DIR}/family_values.cpp")
    target_include_directories(${family}_family_values PRIVATE
        "$<IF:$<STREQUAL:${family},sample>,${sample_family_dir},${PRODUCT_FAMILY_DIR}>")
    set(values "${CMAKE_BINARY_DIR}/${family}_family.values")
    add_custom_command(OUTPUT "${values}"
        COMMAND ${CMAKE_OBJCOPY} -O binary -j .family $<TARGET_OBJECTS:${family}_family_values> "${values}"
        DEPENDS $<TARGET_OBJECTS:${family}_family_values> VERBATIM)
    list(APPEND family_values "${values}")
endforeach()
add_custom_command(OUTPUT "${FAMILY_PAIRS}"
    COMMAND "${PYTHON3}" -B "${FAMILY_TEXTS}" pairs "${FAMILY_PAIRS}" ${family_values}
        "${PRODUCT_FAMILY_NAME}" "${PRODUCT_FAMILY_ID}" "${PRODUCT_FAMILY_PRODUCT}"
    DEPENDS ${family_values} "${FAMILY_TEXTS}" VERBATIM)
add_custom_target(family_pairs ALL DEPENDS "${FAMILY_PAIRS}")

# Visual Studio's linker gets import libraries of its own, with the same names.
find_program(LLVM_DLLTOOL llvm-dlltool REQUIRED)
set(msvc_import_libraries)
foreach(definition src/product_services:ProductServices guard/product_services_guard:ProductServicesGuard)
    string(REGEX REPLACE ":.*" ".def" def_file "${CMAKE_SOURCE_DIR}/${definition}")
    string(REGEX REPLACE ".*:" "" name "${definition}")
    add_custom_command(OUTPUT "${CMAKE_BINARY_DIR}/${name}.lib"
        COMMAND ${LLVM_DLLTOOL} -m i386:x86-64 -D ${name}.dll -d "${def_file}" -l "${CMAKE_BINARY_DIR}/${name}.lib"
        DEPENDS "${def_file}" VERBATIM)
    list(APPEND msvc_import_libraries "${CMAKE_BINARY_DIR}/${name}.lib")
endforeach()
add_custom_target(msvc_import_library ALL DEPENDS ${msvc_import_libraries})

install(FILES "$<TARGET_FILE:ProductServices>.debug" "$<TARGET_FILE:ProductServicesGuard>.debug" DESTINATION bin)
install(FILES ${msvc_import_libraries} DESTINATION lib)

install(FILES ${po_files} "${CMAKE_SOURCE_DIR}/languages/product_services.pot" DESTINATION languages)
install(PROGRAMS "$<TARGET_FILE:SampleHost>" DESTINATION bin)
install(DIRECTORY "${CMAKE_SOURCE_DIR}/samples/minimal_hosts" "${CMAKE_SOURCE_DIR}/samples/host"
    "${CMAKE_SOURCE_DIR}/samples/automation" "${CMAKE_SOURCE_DIR}/samples/declarations" DESTINATION samples PATTERN automation/CMakeLists.txt EXCLUDE)
install(FILES "${CMAKE_CURRENT_LIST_DIR}/package/SampleHost.cmake" DESTINATION samples/host RENAME CMakeLists.txt)
# What the sample host finds in the build; the maker's header with its comments stays with the maker.
install(FILES "${FAMILY_NAMES_DIR}/product_family_names.h" "${CMAKE_CURRENT_LIST_DIR}/package/product_family.h"
    "${PRODUCT_FAMILY_DIR}/library.ico" DESTINATION samples/host)
install(FILES "${CMAKE_SOURCE_DIR}/samples/installer/sample_host.wxs"
    "${CMAKE_SOURCE_DIR}/samples/installer/sample_host_all_users.wxs"
    "${CMAKE_SOURCE_DIR}/samples/installer/sample_host.iss" "${CMAKE_SOURCE_DIR}/samples/installer/sample_host.nsi"
    DESTINATION samples/installer)
install(FILES "${CMAKE_SOURCE_DIR}/tools/product_service.py" "${CMAKE_SOURCE_DIR}/tools/catalogue.json"
    "${CMAKE_SOURCE_DIR}/tools/language_files.py" "${CMAKE_SOURCE_DIR}/tools/language_file_check.py"
    DESTINATION tools)

install(FILES "${CMAKE_CURRENT_LIST_DIR}/package/README.md" DESTINATION .)
foreach(document host-guide installers language-files service troubleshooting)
    install(FILES "${CMAKE_SOURCE_DIR}/docs/${document}.md" DESTINATION docs)
endforeach()
install(DIRECTORY "${CMAKE_SOURCE_DIR}/build/deps/licenses" DESTINATION .)
# The last step: all that the package holds is there.
install(CODE "set(package \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}\")
    execute_process(COMMAND \"${CMAKE_OBJCOPY}\" --strip-all \"\${package}/bin/SampleHost.exe\" COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND \"${PYTHON3}\" -B \"${FAMILY_TEXTS}\" fill \"${FAMILY_PAIRS}\" \"\${package}\"
        COMMAND_ERROR_IS_FATAL ANY)")

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME product-services)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_SYSTEM_NAME windows-x64)
set(CPACK_PACKAGE_FILE_NAME "product-services-${PRODUCT_FAMILY_ID}-${PROJECT_VERSION}-windows-x64")
set(CPACK_PACKAGE_DIRECTORY "${CMAKE_BINARY_DIR}/package")
configure_file("${CMAKE_CURRENT_LIST_DIR}/MakeNupkg.cmake.in" "${CMAKE_BINARY_DIR}/MakeNupkg.cmake" @ONLY)
set(CPACK_POST_BUILD_SCRIPTS "${CMAKE_BINARY_DIR}/MakeNupkg.cmake")
include(CPack)
