# product_services_deploy(TARGET): copies the DLL that TARGET links beside the program that it builds, where Windows finds
# it: ProductServicesGuard.dll, or ProductServices.dll for a host of the bare exports. A host ships one of them.
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
