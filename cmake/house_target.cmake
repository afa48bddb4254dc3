# What every target of the project is compiled with.
function(ara_per_house_target target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    COMPILE_WARNING_AS_ERROR ${ARA_PER_WERROR})
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wold-style-cast -Wformat=2 -Wnon-virtual-dtor
    -Woverloaded-virtual
    # __FILE__ is part of log lines and messages, and the same on every machine.
    "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=")
  target_compile_definitions(${target} PRIVATE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
  if(ARA_PER_SANITIZE)
    target_compile_options(${target} PRIVATE
      -fsanitize=${ARA_PER_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${ARA_PER_SANITIZE})
  endif()
  if(ARA_PER_LIBFUZZER)
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
endfunction()

# Lets a shared library fail at its own link, and not at an application's, when a symbol is missing.
# The sanitizers leave theirs to the program.
function(ara_per_close_library target)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "SHARED_LIBRARY" AND NOT ARA_PER_SANITIZE)
    target_link_options(${target} PRIVATE -Wl,--no-undefined)
  endif()
endfunction()
