# The names of a product family: in the version resources, the sample host and the package.
set(PRODUCT_FAMILY_NAME "Example Maker" CACHE STRING "The maker, as its customers know it")
set(PRODUCT_FAMILY_ID "ExampleMaker.ProductServices" CACHE STRING "The id of the maker's packages, as in NuGet")
set(PRODUCT_FAMILY_PRODUCT "Example Draft" CACHE STRING
    "A product of the first key of KnownApiKeys, which the samples and the documents of the package name")

if(NOT PRODUCT_FAMILY_ID MATCHES "^[A-Za-z0-9_]+([.-][A-Za-z0-9_]+)*$")
    message(FATAL_ERROR "PRODUCT_FAMILY_ID must be letters, digits and single dots, not \"${PRODUCT_FAMILY_ID}\".")
endif()
foreach(name PRODUCT_FAMILY_NAME PRODUCT_FAMILY_PRODUCT)
    if("${${name}}" STREQUAL "" OR "${${name}}" MATCHES "[\"\\\\;%\n]")
        message(FATAL_ERROR "${name} must be a name without quotes, backslashes, semicolons and percent signs.")
    endif()
endforeach()

set(FAMILY_NAMES_DIR "${CMAKE_BINARY_DIR}/generated")
configure_file("${CMAKE_CURRENT_LIST_DIR}/product_family_names.h.in" "${FAMILY_NAMES_DIR}/product_family_names.h"
    @ONLY NEWLINE_STYLE UNIX)
