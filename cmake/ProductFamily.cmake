# The product family: product_family.py reads and checks it, and writes headers for programs and resource scripts.
set(PRODUCT_FAMILY_SCRIPT "${CMAKE_CURRENT_LIST_DIR}/product_family.py")
set(FAMILY_TEMPLATES family_names.h.in product_family.h.in sample_product.h.in)
list(TRANSFORM FAMILY_TEMPLATES PREPEND "${CMAKE_CURRENT_LIST_DIR}/family/")

# run_family_script(OUTPUT_VARIABLE ARGUMENT...): stops the configuration with the error message of the script if it fails.
function(run_family_script output_variable)
    execute_process(COMMAND "${Python3_EXECUTABLE}" -B -X utf8 "${PRODUCT_FAMILY_SCRIPT}" ${ARGN}
        RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE error)
    if(NOT status EQUAL 0)
        string(STRIP "${error}" error)
        message(FATAL_ERROR "${error}")
    endif()
    set(${output_variable} "${output}" PARENT_SCOPE)
endfunction()

# make_family_headers(FILE DIR [http]): writes headers to the folder DIR from the product family's JSON FILE. With "http",
# the address of the service may be a URL without TLS.
function(make_family_headers file dir)
    set(options)
    if("http" IN_LIST ARGN)
        set(options --allow-http)
    endif()
    run_family_script(ignored headers "${file}" "${dir}" ${options})
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
        "${file}" "${PRODUCT_FAMILY_SCRIPT}" ${FAMILY_TEMPLATES})
endfunction()

# family_image_files(OUT DIR): returns the paths of the icon and the background pictures in the folder DIR.
function(family_image_files out dir)
    run_family_script(files image-files)
    list(TRANSFORM files PREPEND "${dir}/")
    set(${out} "${files}" PARENT_SCOPE)
endfunction()

# check_family_images(DIR): stops the configuration with an error message if an image is missing or cannot be used.
function(check_family_images dir)
    run_family_script(ignored images "${dir}")
    family_image_files(files "${dir}")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${files})
endfunction()
