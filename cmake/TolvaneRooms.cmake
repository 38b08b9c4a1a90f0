# A room is a top-level folder with its own library. Its headers are included by their path from the top
# ("core/patch/patch_file.h"). Only targets that link the room find them, so an include that breaks the order of the
# rooms fails to build.

# tolvane_expose(<target> <PUBLIC|INTERFACE|PRIVATE> <room> [entries...]): adds the room's folder, or only the
# named entries of it, to the target's include path with this visibility.
function(tolvane_expose target visibility room)
  set(view ${CMAKE_BINARY_DIR}/rooms/${target})
  if(ARGN)
    file(MAKE_DIRECTORY ${view}/${room})
    foreach(entry IN LISTS ARGN)
      file(CREATE_LINK ${CMAKE_SOURCE_DIR}/${room}/${entry} ${view}/${room}/${entry} SYMBOLIC)
    endforeach()
  else()
    file(MAKE_DIRECTORY ${view})
    file(CREATE_LINK ${CMAKE_SOURCE_DIR}/${room} ${view}/${room} SYMBOLIC)
  endif()
  target_include_directories(${target} ${visibility} ${view})
endfunction()

# Standard library headers that most files of a large room include.
set(TOLVANE_COMMON_HEADERS
  <algorithm> <array> <atomic> <chrono> <condition_variable> <cstdint> <functional> <map> <memory> <mutex> <optional>
  <string> <thread> <utility> <vector>)

# tolvane_precompile(<target> [headers...]): precompiles these and the common headers for the target, if
# TOLVANE_PRECOMPILED is on. Builds without it check that each file includes what it needs.
function(tolvane_precompile target)
  if(TOLVANE_PRECOMPILED)
    target_precompile_headers(${target} PRIVATE ${TOLVANE_COMMON_HEADERS} ${ARGN})
  endif()
endfunction()

# tolvane_room(<room> SOURCES ... [LINK ...] [PRIVATE_LINK ...]): the room's static library, named
# tolvane_<room>.
function(tolvane_room room)
  cmake_parse_arguments(ROOM "" "" "SOURCES;LINK;PRIVATE_LINK" ${ARGN})
  add_library(tolvane_${room} STATIC ${ROOM_SOURCES})
  tolvane_expose(tolvane_${room} PUBLIC ${room})
  target_link_libraries(tolvane_${room} PUBLIC ${ROOM_LINK} PRIVATE ${ROOM_PRIVATE_LINK})
  tolvane_check_headers(tolvane_${room} ${room})
endfunction()
