# A second build of the same sources is quick wherever ccache is present.
find_program(ZELV_CCACHE ccache)
if(ZELV_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_C_COMPILER_LAUNCHER ${ZELV_CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${ZELV_CCACHE})
endif()

# Warnings and sanitizers of this project's own targets; never exported to those who link it.
add_library(zelv_options INTERFACE)
target_compile_options(zelv_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor)
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  target_compile_options(zelv_options INTERFACE -Wthread-safety)
endif()
if(ZELV_WERROR)
  target_compile_options(zelv_options INTERFACE -Werror)
endif()
if(ZELV_SANITIZE)
  target_compile_options(zelv_options INTERFACE -fsanitize=${ZELV_SANITIZE} -fno-omit-frame-pointer
                                                -fno-sanitize-recover=all)
  target_link_options(zelv_options INTERFACE -fsanitize=${ZELV_SANITIZE})
endif()
target_include_directories(zelv_options INTERFACE ${PROJECT_SOURCE_DIR})

# Tests alone take these on top, named behind zelv_options. What they would find in the tests themselves is not worth what they
# cost: the templates of the test framework take five times as long to compile with them.
add_library(zelv_test_options INTERFACE)
if(ZELV_SANITIZE)
  target_compile_options(zelv_test_options INTERFACE -O0)
  if(ZELV_SANITIZE MATCHES "undefined")
    target_compile_options(zelv_test_options INTERFACE -fno-sanitize=undefined)
  endif()
endif()
