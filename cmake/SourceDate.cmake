# read_source_date(FOLDER): the environment's SOURCE_DATE_EPOCH, where it is not set, is the time of the newest commit in
# the checkout FOLDER, and the earliest that a zip can hold where there is no commit. SOURCE_COMMIT is its hash or empty.
function(read_source_date folder)
    execute_process(COMMAND git -C "${folder}" log -1 "--format=%H;%ct"
        OUTPUT_VARIABLE commit OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    if(NOT commit)
        set(commit ";315532800")
    endif()
    list(GET commit 0 hash)
    list(GET commit 1 time)
    if("$ENV{SOURCE_DATE_EPOCH}" STREQUAL "")
        set(ENV{SOURCE_DATE_EPOCH} "${time}")
    endif()
    set(SOURCE_COMMIT "${hash}" PARENT_SCOPE)
endfunction()
