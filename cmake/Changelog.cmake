# Reads CHANGELOG.md, the one place of the releases' dates and changes. Its sections begin with "## VERSION (YYYY-MM-DD)",
# the newest first.

# tolvane_changelog(<package version suffix> <maintainer>): sets TOLVANE_RELEASES, the releases for the metainfo file, and
# TOLVANE_DEBIAN_CHANGELOG, the same in Debian's format.
function(tolvane_changelog suffix maintainer)
  file(READ ${CMAKE_SOURCE_DIR}/CHANGELOG.md rest)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/CHANGELOG.md)
  string(REGEX MATCHALL "\n## [0-9.]+ \\([0-9-]+\\)\n" headings "${rest}")
  foreach(heading IN LISTS headings)
    string(REGEX MATCH "## ([0-9.]+) \\(([0-9-]+)\\)" heading "${heading}")
    set(version ${CMAKE_MATCH_1})
    set(date ${CMAKE_MATCH_2})
    list(APPEND versions ${version})
    string(APPEND releases "    <release version=\"${version}\" date=\"${date}\"/>\n")

    string(FIND "${rest}" "${heading}" begin)
    string(SUBSTRING "${rest}" ${begin} -1 rest)
    string(REPLACE "${heading}\n\n" "" changes "${rest}")
    string(FIND "${changes}" "\n## " end)
    string(SUBSTRING "${changes}" 0 ${end} changes)
    string(REGEX REPLACE "\n+$" "" changes "${changes}")
    string(REPLACE "\n" "\n  " changes "${changes}")
    string(REPLACE "  - " "  * " changes "  ${changes}")
    string(REPLACE "\n  \n" "\n\n" changes "${changes}")
    execute_process(COMMAND date --utc --rfc-email --date ${date} OUTPUT_VARIABLE stamp OUTPUT_STRIP_TRAILING_WHITESPACE
      COMMAND_ERROR_IS_FATAL ANY)
    string(APPEND debian
      "tolvane (${version}${suffix}) unstable; urgency=medium\n\n${changes}\n\n -- ${maintainer}  ${stamp}\n\n")
  endforeach()
  list(GET versions 0 newest)
  if(NOT newest VERSION_EQUAL PROJECT_VERSION)
    message(FATAL_ERROR "CHANGELOG.md begins with ${newest}, but the version is ${PROJECT_VERSION}")
  endif()
  set(TOLVANE_RELEASES "${releases}" PARENT_SCOPE)
  set(TOLVANE_DEBIAN_CHANGELOG "${debian}" PARENT_SCOPE)
endfunction()
