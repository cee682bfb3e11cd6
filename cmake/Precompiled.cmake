# Half of the time to compile a source goes into the standard headers. The builds that only check precompile them; the
# plain build does not, which shows that each source includes what it uses.
include_guard()

option(TELLVANE_PRECOMPILE "precompile the standard headers" OFF)
if(TELLVANE_PRECOMPILE)
  add_compile_options(-pthread)  # some libraries' packages ask for it: all that share the headers have to agree
endif()

set(standard_headers <algorithm> <array> <atomic> <charconv> <chrono> <cmath> <deque> <filesystem> <fstream> <functional>
  <map> <memory> <mutex> <optional> <set> <span> <sstream> <string> <string_view> <thread> <utility> <variant> <vector>)

# precompiled_headers(NAME LIBRARY|EXECUTABLE HEADERS...): the precompiled headers that targets of that kind share
# through `share_headers`. They serve only who is compiled with the same options: libraries and executables differ in
# position independence, frameworks and the other libraries in the visibility of symbols.
function(precompiled_headers name kind)
  if(NOT TELLVANE_PRECOMPILE)
    return()
  endif()
  set(source ${PROJECT_BINARY_DIR}/${name}.cpp)
  file(CONFIGURE OUTPUT ${source} CONTENT "int main() {}\n" @ONLY)
  if(kind STREQUAL "LIBRARY")
    add_library(${name} OBJECT ${source})
  else()
    add_executable(${name} ${source})
  endif()
  target_precompile_headers(${name} PRIVATE ${ARGN})
endfunction()

function(share_headers target name)
  if(TELLVANE_PRECOMPILE)
    target_precompile_headers(${target} REUSE_FROM ${name})
    target_compile_options(${target} PRIVATE  # for ccache
      $<IF:$<CXX_COMPILER_ID:Clang>,SHELL:-Xclang -fno-pch-timestamp,-fpch-preprocess>)
  endif()
endfunction()
