# The page of `run --http`: one file without a reference to another, composed from the sources in this folder. Sets
# TOLVANE_PAGE, the file that the build makes.

# Each script may import only from those before it.
set(page_scripts dom store token decibels geometry levels patch link desk gain_hand aria_window canvas painter matrix fader strip list
  status scenes dialogs lock main)
list(TRANSFORM page_scripts APPEND .mjs)
list(TRANSFORM page_scripts PREPEND ${CMAKE_CURRENT_LIST_DIR}/)
set(TOLVANE_PAGE ${CMAKE_BINARY_DIR}/page/page.html CACHE INTERNAL "the page of run --http")
add_custom_command(
  OUTPUT ${TOLVANE_PAGE}
  COMMAND ${CMAKE_COMMAND} -D PAGE=${TOLVANE_PAGE} -D FOLDER=${CMAKE_CURRENT_LIST_DIR} -D "SCRIPTS=${page_scripts}"
    -P ${CMAKE_CURRENT_LIST_DIR}/compose.cmake
  DEPENDS ${page_scripts} ${CMAKE_CURRENT_LIST_DIR}/page.html ${CMAKE_CURRENT_LIST_DIR}/page.css
    ${CMAKE_CURRENT_LIST_DIR}/compose.cmake
  VERBATIM)
