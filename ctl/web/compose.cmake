# cmake -D PAGE=<output> -D FOLDER=<sources> -D SCRIPTS=<list> -P compose.cmake: puts the style and the scripts into the page.
# The scripts become one module, so their imports and exports go.
cmake_minimum_required(VERSION 3.25)
foreach(path IN LISTS SCRIPTS)
  file(READ ${path} text)
  string(REGEX REPLACE "(^|\n)import [^\n]*" "" text "${text}")
  string(REGEX REPLACE "(^|\n)export " "\\1" text "${text}")
  string(APPEND script "${text}\n")
endforeach()
file(READ ${FOLDER}/page.css style)
file(READ ${FOLDER}/page.html page)
string(REPLACE "/*page.css*/" "${style}" page "${page}")
string(REPLACE "/*scripts*/" "${script}" page "${page}")
file(WRITE ${PAGE} "${page}")
