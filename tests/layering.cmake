# Fails when a source includes from a layer above its own, or an installed header includes one
# that is not installed. Run as:
#   cmake -DSRC=<src folder> -P layering.cmake
cmake_minimum_required(VERSION 3.20)
set(offences "")
function(refuse_includes folders pattern)
  foreach(folder ${folders})
    file(GLOB_RECURSE sources "${SRC}/${folder}/*.h" "${SRC}/${folder}/*.cpp")
    foreach(source ${sources})
      file(STRINGS "${source}" includes REGEX "^#include [\"<]${pattern}")
      file(RELATIVE_PATH shown "${SRC}" "${source}")
      foreach(line ${includes})
        string(APPEND offences "  ${shown}: ${line}\n")
      endforeach()
    endforeach()
  endforeach()
  set(offences "${offences}" PARENT_SCOPE)
endfunction()

# The platform layer, the channel and the JSON reader stand on their own, so the client library
# and the tools can use them without the GUI.
refuse_includes("platform;channel;json" "(app|server|progress|console|client)/")
# The client library and qem_ctl stand on the core alone: no GUI layer, no Qt.
refuse_includes("client" "(app|server|progress|console|Q)")
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
