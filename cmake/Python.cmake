# Sets Python3_EXECUTABLE for the whole build. On Debian, the system's Python is preferred, because it has Debian's polib and
# pytest.
if(NOT DEFINED Python3_EXECUTABLE AND CMAKE_HOST_SYSTEM_NAME STREQUAL "Linux"
        AND EXISTS "/etc/debian_version" AND EXISTS "/usr/bin/python3")
    set(Python3_EXECUTABLE "/usr/bin/python3")
endif()
# On Windows, the Python in PATH, for which `python -m pip` installs, is preferred to those in the registry.
set(Python3_FIND_REGISTRY LAST)
find_package(Python3 REQUIRED COMPONENTS Interpreter)
