# The pictures of a product family, in one list: a file, and the sizes that it must have.
set(FAMILY_PICTURES
    library.ico:16,24,32,48,64,96,128,256
    background_332.bmp:726x463
    background_333.bmp:726x463
    background_335.bmp:726x463
    background_343.bmp:726x463
    background_1077.bmp:726x463)
set(CHECK_FAMILY_PICTURES "${CMAKE_CURRENT_LIST_DIR}/check_family_pictures.py")

# family_picture_files(OUT DIR): the pictures of the folder DIR, with their paths.
function(family_picture_files out dir)
    list(TRANSFORM FAMILY_PICTURES REPLACE ":.*" "" OUTPUT_VARIABLE files)
    list(TRANSFORM files PREPEND "${dir}/")
    set(${out} "${files}" PARENT_SCOPE)
endfunction()

# check_family_pictures(DIR): stops the configuration with one sentence where a picture is missing or of another kind.
function(check_family_pictures dir)
    execute_process(COMMAND "${Python3_EXECUTABLE}" -B "${CHECK_FAMILY_PICTURES}" "${dir}" ${FAMILY_PICTURES}
        RESULT_VARIABLE status ERROR_VARIABLE sentence)
    if(status)
        string(STRIP "${sentence}" sentence)
        message(FATAL_ERROR "${sentence}")
    endif()
    family_picture_files(files "${dir}")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${CHECK_FAMILY_PICTURES}" ${files})
endfunction()
