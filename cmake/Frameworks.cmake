# ios_framework(NAME [WINGS ...] [EQUIPMENT ...] [LINKS ...] [USES ...] [OWN ...] [THIRD_PARTY ...])
#
# One folder of platform/ as one target: the sources and headers in it or, in a large framework, in its wings.
#   WINGS        the folders that divide it, lowest first; each may include those before it, never a later one
#   EQUIPMENT    public headers, as patterns, that the real platform does not have: for the frameworks, the simulator and
#                tests. All others are in NAME/NAME.h; a framework that is all equipment ("*") has no NAME.h
#   LINKS        lower frameworks that the headers mention; targets that link this one see them too
#   USES         lower frameworks that only the sources use
#   OWN          headers for the platform's own sources: they are not installed, and no installed header includes them
#   THIRD_PARTY  libraries that only the sources use
#
# Its headers are reached as "NAME/Header.h", whichever wing they are in, and only by targets that link ios_NAME: each
# framework has an include root of its own, so an include that the map forbids does not build. Headers in a Private/
# folder are reached as "NAME/Private/Header.h", from within the framework only.
#
# ios_NAME_headers is the include root alone; ios_NAME adds the platform's one shared image.
include_guard()
if(TELLVANE_SANITIZE)
  add_compile_options(-fsanitize=${TELLVANE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TELLVANE_SANITIZE})
endif()
include(Precompiled)
precompiled_headers(framework_headers LIBRARY ${standard_headers})
if(TARGET framework_headers)
  set_target_properties(framework_headers PROPERTIES CXX_VISIBILITY_PRESET default VISIBILITY_INLINES_HIDDEN OFF)
endif()
precompiled_headers(library_headers LIBRARY ${standard_headers})

# check_headers compiles each header that others may include alone and included twice, seeing no more than its users do.
add_custom_target(check_headers)

# ios_check_headers(NAME LIBRARIES HEADERS...): adds headers, as written in "#include", which are compiled with the
# include folders of LIBRARIES.
function(ios_check_headers name libraries)
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

# include_root(ROOT HEADERS...): makes a folder of links to the headers, and removes links to headers that are gone.
function(include_root root)
  file(GLOB stale RELATIVE ${root} ${root}/*.h)
  foreach(header IN LISTS ARGN)
    get_filename_component(name ${header} NAME)
    if(EXISTS ${root}/${name} AND NOT name IN_LIST stale)
      message(FATAL_ERROR "${header}: a header of this name is in another wing")
    endif()
    list(REMOVE_ITEM stale ${name})
    file(MAKE_DIRECTORY ${root})
    file(CREATE_LINK ${header} ${root}/${name} SYMBOLIC)
  endforeach()
  foreach(name IN LISTS stale)
    file(REMOVE ${root}/${name})
  endforeach()
endfunction()

function(ios_framework name)
  cmake_parse_arguments(arg "" "" "WINGS;EQUIPMENT;LINKS;USES;OWN;THIRD_PARTY" ${ARGN})
  set(sources)
  set(public)
  set(private)
  foreach(folder IN LISTS CMAKE_CURRENT_SOURCE_DIR arg_WINGS)
    get_filename_component(folder ${folder} ABSOLUTE)
    file(GLOB found_sources CONFIGURE_DEPENDS ${folder}/*.cpp)
    file(GLOB found_public CONFIGURE_DEPENDS ${folder}/*.h)
    file(GLOB found_private CONFIGURE_DEPENDS ${folder}/Private/*.h)
    list(APPEND sources ${found_sources})
    list(APPEND public ${found_public})
    list(APPEND private ${found_private})
  endforeach()
  include_root(${PROJECT_BINARY_DIR}/roots/public/${name}/${name} ${public})
  include_root(${PROJECT_BINARY_DIR}/roots/private/${name}/${name}/Private ${private})

  add_library(ios_${name}_headers INTERFACE)
  target_include_directories(ios_${name}_headers INTERFACE $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/roots/public/${name}>)
  list(TRANSFORM arg_LINKS REPLACE "(.+)" "ios_\\1_headers")
  list(TRANSFORM arg_USES REPLACE "(.+)" "ios_\\1_headers")
  target_link_libraries(ios_${name}_headers INTERFACE ${arg_LINKS})

  add_library(ios_${name}_objects OBJECT ${sources})
  target_include_directories(ios_${name}_objects PRIVATE ${PROJECT_BINARY_DIR}/roots/private/${name})
  target_link_libraries(ios_${name}_objects PRIVATE ios_${name}_headers ${arg_USES} ${arg_THIRD_PARTY})
  share_headers(ios_${name}_objects framework_headers)
  # The platform is one image that exports everything: hosts, the library and tests share its singletons.
  set_target_properties(ios_${name}_objects PROPERTIES CXX_VISIBILITY_PRESET default VISIBILITY_INLINES_HIDDEN OFF)

  add_library(ios_${name} INTERFACE)
  target_link_libraries(ios_${name} INTERFACE ios_${name}_headers ios)

  list(TRANSFORM public REPLACE ".*/" "${name}/" OUTPUT_VARIABLE included)
  ios_check_headers(${name} ios_${name}_headers ${included})

  set(installed)
  list(TRANSFORM arg_OWN PREPEND "${name}/" OUTPUT_VARIABLE own)
  set_property(GLOBAL APPEND PROPERTY IOS_OWN_HEADERS ${own})
  get_property(own GLOBAL PROPERTY IOS_OWN_HEADERS)
  foreach(header IN LISTS public)
    get_filename_component(file ${header} NAME)
    if(file IN_LIST arg_OWN)
      continue()
    endif()
    file(STRINGS ${header} includes REGEX "^#include \"")
    foreach(include IN LISTS includes)
      string(REGEX REPLACE "^#include \"(.*)\".*" "\\1" include "${include}")
      if(include IN_LIST own)
        message(FATAL_ERROR "${header}: installed, and includes ${include}, which is not")
      endif()
    endforeach()
    list(APPEND installed ${header})
  endforeach()
  set_property(TARGET ios_${name}_headers PROPERTY IOS_PUBLIC_HEADERS ${installed})
  set_property(GLOBAL APPEND PROPERTY IOS_FRAMEWORKS ${name})
  set_property(GLOBAL APPEND PROPERTY IOS_THIRD_PARTY ${arg_THIRD_PARTY})
endfunction()
