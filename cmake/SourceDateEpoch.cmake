# read_source_date_epoch(FOLDER): sets the environment variable SOURCE_DATE_EPOCH, unless it is set, to the time of the newest
# commit in the checkout FOLDER. Without a commit, it is the earliest time that a zip archive can store. SOURCE_COMMIT becomes
# the hash of the commit, or empty.
function(read_source_date_epoch folder)
    foreach(field hash:%H time:%ct)
        string(REGEX MATCH "^(.*):(.*)$" ignored "${field}")
        set(name "${CMAKE_MATCH_1}")
        execute_process(COMMAND git -C "${folder}" log -1 "--format=${CMAKE_MATCH_2}"
            OUTPUT_VARIABLE ${name} OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    endforeach()
    if("${time}" STREQUAL "")
        set(time 315532800)
    endif()
    if("$ENV{SOURCE_DATE_EPOCH}" STREQUAL "")
        set(ENV{SOURCE_DATE_EPOCH} "${time}")
    endif()
    set(SOURCE_COMMIT "${hash}" PARENT_SCOPE)
endfunction()
