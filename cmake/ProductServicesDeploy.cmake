# product_services_deploy(TARGET): both DLLs are copied beside the program that TARGET builds, where Windows finds them.
function(product_services_deploy target)
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${CMAKE_COMMAND} -E copy_if_different
            $<TARGET_FILE:ProductServices::Guard> $<TARGET_FILE:ProductServices::ProductServices>
            $<TARGET_FILE_DIR:${target}>
        VERBATIM)
endfunction()
