# ios_framework(NAME SOURCES ... [LINKS ...] [USES ...] [THIRD_PARTY ...])
#
# One folder of platform/ as one target. Its headers are reached as "NAME/Header.h", and only by targets that link
# ios_NAME: each framework has an include root of its own, so an include that the map forbids does not build.
#   LINKS        lower frameworks that the headers mention; who links this one sees them too
#   USES         lower frameworks that only the sources use
#   THIRD_PARTY  libraries that only the sources use
#
# ios_NAME_headers is the include root alone; ios_NAME adds the platform's one shared image.
include_guard()
if(TELLVANE_SANITIZE)
  add_compile_options(-fsanitize=${TELLVANE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TELLVANE_SANITIZE})
endif()
include(Precompiled)
precompiled_headers(framework_headers LIBRARY ${standard_headers})

# check_headers compiles each header that others may include alone and included twice, seeing no more than its users do.
add_custom_target(check_headers)

# ios_check_headers(NAME LIBRARIES HEADERS...): adds headers to it, as "#include" has them, with what LIBRARIES let see.
function(ios_check_headers name libraries)
  list(FILTER ARGN EXCLUDE REGEX "\\+Private\\.h$")
  set(sources)
  foreach(header IN LISTS ARGN)
    set(source ${PROJECT_BINARY_DIR}/headers/${header}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "#include \"${header}\"\n#include \"${header}\"\n" @ONLY)
    list(APPEND sources ${source})
  endforeach()
  add_library(check_${name}_headers OBJECT EXCLUDE_FROM_ALL ${sources})
  target_link_libraries(check_${name}_headers PRIVATE ${libraries})
  target_compile_options(check_${name}_headers PRIVATE -Werror -O0 -g0)
  add_dependencies(check_headers check_${name}_headers)
endfunction()

function(ios_framework name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINKS;USES;THIRD_PARTY" ${ARGN})
  set(root ${PROJECT_BINARY_DIR}/include/${name})
  file(MAKE_DIRECTORY ${root})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${root}/${name} SYMBOLIC)

  add_library(ios_${name}_headers INTERFACE)
  target_include_directories(ios_${name}_headers INTERFACE $<BUILD_INTERFACE:${root}>)
  list(TRANSFORM arg_LINKS REPLACE "(.+)" "ios_\\1_headers")
  list(TRANSFORM arg_USES REPLACE "(.+)" "ios_\\1_headers")
  target_link_libraries(ios_${name}_headers INTERFACE ${arg_LINKS})

  add_library(ios_${name}_objects OBJECT ${arg_SOURCES})
  target_link_libraries(ios_${name}_objects PRIVATE ios_${name}_headers ${arg_USES} ${arg_THIRD_PARTY})
  share_headers(ios_${name}_objects framework_headers)
  # The platform is one image that exports everything: hosts, the library and tests share its singletons.
  set_target_properties(ios_${name}_objects PROPERTIES CXX_VISIBILITY_PRESET default VISIBILITY_INLINES_HIDDEN OFF)

  add_library(ios_${name} INTERFACE)
  target_link_libraries(ios_${name} INTERFACE ios_${name}_headers ios)

  file(GLOB headers CONFIGURE_DEPENDS RELATIVE ${root} ${root}/${name}/*.h ${root}/${name}/Automation/*.h)
  ios_check_headers(${name} ios_${name}_headers ${headers})

  set_property(GLOBAL APPEND PROPERTY IOS_FRAMEWORKS ${name})
  set_property(GLOBAL APPEND PROPERTY IOS_THIRD_PARTY ${arg_THIRD_PARTY})
endfunction()
