# The package for host developers, product-services-<package_id>-<version>-windows-x64.zip, and a NuGet package for Visual
# Studio, <package_id>.<version>.nupkg. package_id comes from the product family.
set(FAMILY_JSON "${PRODUCT_FAMILY_DIR}/product_family.json")
set(SAMPLE_FAMILY_JSON "${PROJECT_SOURCE_DIR}/product_family/sample/product_family.json")
file(READ "${FAMILY_JSON}" json)
string(JSON package_id GET "${json}" package_id)

# Visual Studio's linker needs its own import libraries, which have the DLLs' names. They are named without a path,
# because llvm-dlltool takes a % in one for a placeholder.
find_program(LLVM_DLLTOOL llvm-dlltool REQUIRED)
set(msvc_import_libraries)
foreach(definition src/product_services:ProductServices guard/product_services_guard:ProductServicesGuard)
    string(REGEX REPLACE ":.*" ".def" def_file "${PROJECT_SOURCE_DIR}/${definition}")
    string(REGEX REPLACE ".*:" "" name "${definition}")
    add_custom_command(OUTPUT "${PROJECT_BINARY_DIR}/${name}.lib"
        COMMAND ${LLVM_DLLTOOL} -m i386:x86-64 -D ${name}.dll -d "${def_file}" -l ${name}.lib
        DEPENDS "${def_file}" VERBATIM)
    list(APPEND msvc_import_libraries "${PROJECT_BINARY_DIR}/${name}.lib")
endforeach()
add_custom_target(msvc_import_libraries ALL DEPENDS ${msvc_import_libraries})

foreach(target ProductServices ProductServicesGuard)
    install(FILES "$<TARGET_FILE:${target}>.debug" "$<TARGET_FILE_DIR:${target}>/${target}.pdb" DESTINATION bin)
endforeach()
install(FILES ${msvc_import_libraries} DESTINATION lib)

install(FILES ${po_files} "${PROJECT_SOURCE_DIR}/languages/product_services.pot" DESTINATION languages)
install(PROGRAMS "$<TARGET_FILE:SampleHost>" DESTINATION bin)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/samples/minimal_hosts" "${PROJECT_SOURCE_DIR}/samples/host"
    "${PROJECT_SOURCE_DIR}/samples/bindings" "${PROJECT_SOURCE_DIR}/samples/script_host"
    "${PROJECT_SOURCE_DIR}/samples/service" DESTINATION samples)
install(FILES "${CMAKE_CURRENT_LIST_DIR}/package/SampleHost.cmake" DESTINATION samples/host RENAME CMakeLists.txt)
install(FILES "${PRODUCT_FAMILY_DIR}/library.ico" DESTINATION samples/host)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/samples/installer" DESTINATION samples PATTERN build.sh EXCLUDE)
foreach(file catalogue.json nginx_export.py product_catalogue.py product_service.py)
    install(FILES "${PROJECT_SOURCE_DIR}/tools/${file}" DESTINATION tools)
endforeach()
install(FILES ${tool_files} DESTINATION tools)

install(FILES "${CMAKE_CURRENT_LIST_DIR}/package/README.md" DESTINATION .)
foreach(document administrators.md compatibility.md getting-started.md host-guide.md installers.md language-files.md reference.md
        service.md translating.md troubleshooting.md upgrade-center-texts.png)
    install(FILES "${PROJECT_SOURCE_DIR}/docs/${document}" DESTINATION docs)
endforeach()
install(DIRECTORY "${PROJECT_SOURCE_DIR}/build/deps/licenses" DESTINATION .)
# Runs when all text files of the package are installed. objcopy also uses SOURCE_DATE_EPOCH.
install(CODE "set(package \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}\")
    include([==[${CMAKE_CURRENT_LIST_DIR}/SourceDateEpoch.cmake]==])
    read_source_date_epoch([==[${PROJECT_SOURCE_DIR}]==])
    foreach(program bin/SampleHost.exe tools/ProductServicesTool.exe)
        execute_process(COMMAND [==[${CMAKE_OBJCOPY}]==] --strip-all \"\${package}/\${program}\"
            COMMAND_ERROR_IS_FATAL ANY)
    endforeach()
    execute_process(COMMAND [==[${Python3_EXECUTABLE}]==] -B [==[${CMAKE_CURRENT_LIST_DIR}/brand_package.py]==]
        [==[${SAMPLE_FAMILY_JSON}]==] [==[${FAMILY_JSON}]==] \"\${package}\" COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND [==[${Python3_EXECUTABLE}]==] -B [==[${CMAKE_CURRENT_LIST_DIR}/policy_templates.py]==]
        [==[${FAMILY_JSON}]==] \"\${package}/policies\" COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND [==[${Python3_EXECUTABLE}]==] -B [==[${CMAKE_CURRENT_LIST_DIR}/make_sbom.py]==]
        \"\${package}\" --family [==[${FAMILY_JSON}]==] --version ${PROJECT_VERSION}
        --commit \"\${SOURCE_COMMIT}\" --deps [==[${PROJECT_SOURCE_DIR}/build/deps]==] COMMAND_ERROR_IS_FATAL ANY)")
# This file already has the names of the family.
install(FILES "${FAMILY_HEADERS_DIR}/sample_product.h" DESTINATION samples/host)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME product-services)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_SYSTEM_NAME windows-x64)
set(CPACK_PACKAGE_FILE_NAME "product-services-${package_id}-${PROJECT_VERSION}-windows-x64")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/package")
configure_file("${CMAKE_CURRENT_LIST_DIR}/PostPackage.cmake.in" "${PROJECT_BINARY_DIR}/PostPackage.cmake" @ONLY)
set(CPACK_POST_BUILD_SCRIPTS "${PROJECT_BINARY_DIR}/PostPackage.cmake")
include(CPack)
