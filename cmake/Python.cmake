# Python3_EXECUTABLE: Python, for the whole build. On Debian its own comes first: it has Debian's polib and pytest.
if(NOT DEFINED Python3_EXECUTABLE AND CMAKE_HOST_SYSTEM_NAME STREQUAL "Linux"
        AND EXISTS "/etc/debian_version" AND EXISTS "/usr/bin/python3")
    set(Python3_EXECUTABLE "/usr/bin/python3")
endif()
# On Windows, the one that `python -m pip` is for comes before those of the registry.
set(Python3_FIND_REGISTRY LAST)
find_package(Python3 REQUIRED COMPONENTS Interpreter)
