# Fails when a source below the application includes anything from above it: the platform layer,
# the channel and the JSON reader stand on their own, so the client library and the tools can use
# them without the GUI. Run as: cmake -DSRC=<src folder> -P layering.cmake
set(offences "")
foreach(layer platform channel json)
  file(GLOB_RECURSE sources "${SRC}/${layer}/*.h" "${SRC}/${layer}/*.cpp")
  foreach(source ${sources})
    file(STRINGS "${source}" includes REGEX "^#include \"(app|server|progress|console|client)/")
    foreach(line ${includes})
      file(RELATIVE_PATH shown "${SRC}" "${source}")
      string(APPEND offences "  ${shown}: ${line}\n")
    endforeach()
  endforeach()
endforeach()
if(offences)
  message(FATAL_ERROR "Sources below the application include from above it:\n${offences}")
endif()
