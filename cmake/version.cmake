# Sets `result` to the version that the literal in `source` tells ("00.06.02" is 0.6.2), so that the
# two can't drift apart.
function(ara_per_read_version source result)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${source}")
  file(READ "${CMAKE_CURRENT_SOURCE_DIR}/${source}" text)
  if(NOT text MATCHES "\"0?([0-9]+)\\.0?([0-9]+)\\.0?([0-9]+)")
    message(FATAL_ERROR "${source} holds no version literal of the form \"00.00.00\"")
  endif()
  set(${result} "${CMAKE_MATCH_1}.${CMAKE_MATCH_2}.${CMAKE_MATCH_3}" PARENT_SCOPE)
endfunction()
