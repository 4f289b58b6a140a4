# product_services_deploy(TARGET): copies the DLL that TARGET links to the folder of its program, where Windows finds it:
# ProductServicesGuard.dll, or ProductServices.dll for a host that makes direct calls. A host ships one of the two.
function(product_services_deploy target)
    set(library ProductServices::Guard)
    get_target_property(linked ${target} LINK_LIBRARIES)
    if("ProductServices::ProductServices" IN_LIST linked)
        set(library ProductServices::ProductServices)
    endif()
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${CMAKE_COMMAND} -E copy_if_different $<TARGET_FILE:${library}> $<TARGET_FILE_DIR:${target}>
        VERBATIM)
endfunction()
