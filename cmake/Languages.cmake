# Builds the language files from the translations: lang/XX/Vemo_XX.lang in the output folder of the programs.
set(PRODUCT_TRANSLATIONS_DIR "${PROJECT_SOURCE_DIR}/languages" CACHE PATH
    "The folder with the translations: cs.po, de.po and so on")

# In a pattern, a [ of the path would begin a set of characters.
string(REGEX REPLACE "([[*?])" "[\\1]" literal_dir "${PRODUCT_TRANSLATIONS_DIR}")
file(GLOB po_files CONFIGURE_DEPENDS "${literal_dir}/*.po")
if(NOT po_files)
    message(FATAL_ERROR "PRODUCT_TRANSLATIONS_DIR (${PRODUCT_TRANSLATIONS_DIR}) contains no PO files.")
endif()

execute_process(COMMAND "${Python3_EXECUTABLE}" -c "import polib" RESULT_VARIABLE polib_status ERROR_QUIET)
if(NOT polib_status EQUAL 0)
    message(FATAL_ERROR "polib not found for ${Python3_EXECUTABLE}: run ./setup.sh first, or \
${Python3_EXECUTABLE} -m pip install polib.")
endif()

set(msgfmt_commands "")
find_program(MSGFMT msgfmt)
if(MSGFMT)
    foreach(po_file IN LISTS po_files)
        list(APPEND msgfmt_commands COMMAND "${MSGFMT}" -c -o "${PROJECT_BINARY_DIR}/checked.mo" "${po_file}")
    endforeach()
else()
    message(STATUS "msgfmt (gettext) not found; translations are not checked with it.")
endif()

set(tool "${PROJECT_SOURCE_DIR}/tools/language_files.py")
set(tool_files language_files.py language_file_check.py po_file.py text_width.py)
list(TRANSFORM tool_files PREPEND "${PROJECT_SOURCE_DIR}/tools/")
set(template "${PROJECT_SOURCE_DIR}/languages/product_services.pot")
set(texts "${PROJECT_SOURCE_DIR}/src/text")
set(lang_dir "${PROJECT_BINARY_DIR}/bin/lang")
set(languages_stamp "${PROJECT_BINARY_DIR}/languages.stamp")
add_custom_command(OUTPUT "${languages_stamp}"
    # Fails if the template does not match the built-in texts.
    COMMAND "${Python3_EXECUTABLE}" -B "${tool}" update-template "${template}"
    ${msgfmt_commands}
    COMMAND "${CMAKE_COMMAND}" -E rm -rf "${lang_dir}"
    COMMAND "${Python3_EXECUTABLE}" -B "${tool}" build ${po_files} --output "${lang_dir}"
    COMMAND "${Python3_EXECUTABLE}" -B "${tool}" check "${lang_dir}"
    COMMAND "${CMAKE_COMMAND}" -E touch "${languages_stamp}"
    DEPENDS ${po_files} "${template}" ${tool_files} "${texts}/text_ids.h" "${texts}/default_texts.cpp"
    COMMENT "Building the language files" VERBATIM)
add_custom_target(language_files ALL DEPENDS "${languages_stamp}")
