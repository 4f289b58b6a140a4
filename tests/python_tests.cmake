# Tests in Python: the tools, the build's checks, and what was built. They need Debian's Wine and Python.
if(NOT MINGW)
    return()
endif()

find_program(PYTHON3 python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)

# add_python_test(NAME [PROPERTY VALUE...]): runs tests/NAME.py with the folder of the built programs at hand.
function(add_python_test name)
    add_test(NAME python.${name}
        COMMAND "${PYTHON3}" -B "${CMAKE_CURRENT_SOURCE_DIR}/${name}.py")
    set_tests_properties(python.${name} PROPERTIES TIMEOUT 120
        ENVIRONMENT "PRODUCT_SERVICES_BIN=${CMAKE_RUNTIME_OUTPUT_DIRECTORY}" ${ARGN})
endfunction()

add_python_test(test_library_file)
add_python_test(test_product_service)
# It builds the library once more.
add_python_test(test_product_family TIMEOUT 600)
# The sample family's service has one port, and the sample product one record.
add_python_test(test_sample_host TIMEOUT 300 RESOURCE_LOCK sample_service_port)
# Its hosts are of the sample product, and must not find its record.
add_python_test(test_package TIMEOUT 300 RESOURCE_LOCK sample_service_port)
add_python_test(test_language_file_tool)
# It uses what was installed with the sample family's service.
add_python_test(test_installer TIMEOUT 300 RESOURCE_LOCK sample_service_port)
