# check_product_family(DIR): stops the configuration with one sentence where a product family's folder lacks
# something or holds a picture of the wrong size or depth.
find_package(Python3 COMPONENTS Interpreter REQUIRED)
set(CHECK_PRODUCT_FAMILY "${CMAKE_CURRENT_LIST_DIR}/check_product_family.py")

function(check_product_family dir)
    set(names product_family.h library.ico background_332.bmp background_333.bmp background_335.bmp
        background_343.bmp background_1077.bmp)
    execute_process(COMMAND "${Python3_EXECUTABLE}" -B "${CHECK_PRODUCT_FAMILY}" "${dir}" ${names}
        RESULT_VARIABLE status ERROR_VARIABLE sentence)
    if(status)
        string(STRIP "${sentence}" sentence)
        message(FATAL_ERROR "${sentence}")
    endif()
    list(TRANSFORM names PREPEND "${dir}/" OUTPUT_VARIABLE files)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${CHECK_PRODUCT_FAMILY}" ${files})
endfunction()
