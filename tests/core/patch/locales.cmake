# Compiles the locales for tests of numbers, so that none must be installed.
find_program(TOLVANE_LOCALEDEF localedef REQUIRED)
set(TOLVANE_TEST_LOCALES ${CMAKE_CURRENT_BINARY_DIR}/locales)
set(locales)
foreach(language de_DE ps_AF)
  set(locale ${TOLVANE_TEST_LOCALES}/${language}.UTF-8)
  add_custom_command(
    OUTPUT ${locale}/LC_NUMERIC
    COMMAND ${CMAKE_COMMAND} -E make_directory ${TOLVANE_TEST_LOCALES}
    COMMAND ${TOLVANE_LOCALEDEF} --no-archive -i ${language} -f UTF-8 ${locale}
    COMMENT "Compiling the locale ${language}.UTF-8"
    VERBATIM)
  list(APPEND locales ${locale}/LC_NUMERIC)
endforeach()
add_custom_target(test_locales DEPENDS ${locales})
