# Makes the library `name` of the platform known: builds the stand-in `target` in `folder`, or lets
# the imported target `replacement` take its place. The replacement must exist by then; in a build
# of this project alone, a file named by CMAKE_PROJECT_ara_per_INCLUDE can find it.
function(ara_per_platform_library name target folder replacement)
  if(NOT replacement)
    # What a stand-in finds for itself, static libraries hand on to whoever links them.
    set(CMAKE_FIND_PACKAGE_TARGETS_GLOBAL ON)
    add_subdirectory(${folder})
    ara_per_house_target(${target})
    ara_per_close_library(${target})
    set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
  elseif(NOT TARGET "${replacement}")
    message(FATAL_ERROR "${name} is to be replaced by ${replacement}, which is no known target")
  elseif(NOT replacement STREQUAL name)
    add_library(${name} ALIAS ${replacement})
  endif()
endfunction()
