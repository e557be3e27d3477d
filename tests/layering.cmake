# Fails when a source includes from a layer above its own, when anything below the GUI includes
# Qt, or when an installed header includes one that is not installed. Run as:
#   cmake -DSRC=<src folder> -P layering.cmake
cmake_minimum_required(VERSION 3.20)
set(offences "")

# Who may include whom, each folder with the folders below it:
#   platform <- channel, json <- server <- progress <- app, console
#   client <- channel, json, platform
# The application makes the console, so it may include it.
set(folders platform channel json server progress console app client)
set(below_platform "")
set(below_channel platform)
set(below_json platform)
set(below_server platform channel json)
set(below_progress platform channel json server)
set(below_console platform channel json server progress)
set(below_app platform channel json server progress console)
set(below_client platform channel json)
# The progress window knows the server only through these two.
set(server_seen_by_progress server/commandable.h server/message_forwarder.h)

# The platform layer's halves: nothing of the first may include Qt or the second.
include(${SRC}/platform/layers.cmake)
set(gui_headers "")
foreach(name ${qem_platform_gui})
  list(APPEND gui_headers "platform/${name}.h")
endforeach()

# Offences of one source of `folder`; `no_gui`: it stands below the GUI.
function(check_source source folder no_gui)
  file(RELATIVE_PATH shown "${SRC}" "${source}")
  file(STRINGS "${source}" includes REGEX "^#include [\"<]")
  foreach(line ${includes})
    string(REGEX REPLACE "^#include [\"<]([^\">]+)[\">].*" "\\1" included "${line}")
    string(REGEX REPLACE "/.*" "" top "${included}")
    set(why "")
    if(top IN_LIST folders AND NOT top STREQUAL folder AND NOT top IN_LIST below_${folder})
      set(why "points up")
    elseif(folder STREQUAL "progress" AND top STREQUAL "server" AND
           NOT included IN_LIST server_seen_by_progress)
      set(why "more of the server than its two interfaces")
    elseif(no_gui AND (line MATCHES "^#include <Q" OR included IN_LIST gui_headers))
      set(why "the GUI below it")
    endif()
    if(why)
      string(APPEND offences "  ${shown}: ${line} (${why})\n")
    endif()
  endforeach()
  set(offences "${offences}" PARENT_SCOPE)
endfunction()

foreach(folder ${folders})
  file(GLOB_RECURSE sources "${SRC}/${folder}/*.h" "${SRC}/${folder}/*.cpp")
  foreach(source ${sources})
    set(no_gui OFF)
    if(folder MATCHES "^(channel|json|client)$")
      set(no_gui ON)
    elseif(folder STREQUAL "platform")
      get_filename_component(name "${source}" NAME_WE)
      if(name IN_LIST qem_platform_core)
        set(no_gui ON)
      elseif(NOT name IN_LIST qem_platform_gui)
        string(APPEND offences "  platform/${name}: in neither half of platform/layers.cmake\n")
      endif()
    endif()
    check_source("${source}" "${folder}" ${no_gui})
  endforeach()
endforeach()

# The installed headers are whole: each project header that one of them includes is installed too.
include(${CMAKE_CURRENT_LIST_DIR}/../cmake/public_headers.cmake)
foreach(header ${qem_public_headers})
  file(STRINGS "${SRC}/${header}" includes REGEX "^#include \"")
  foreach(line ${includes})
    string(REGEX REPLACE "^#include \"([^\"]+)\".*" "\\1" included "${line}")
    if(NOT included IN_LIST qem_public_headers)
      string(APPEND offences "  ${header}: ${line} (not installed)\n")
    endif()
  endforeach()
endforeach()
if(offences)
  message(FATAL_ERROR "Sources include what they must not:\n${offences}")
endif()
