# What an install prefix holds:
#   lib/libios.so                  the platform
#   lib/Tellvane.framework/        the library, shared, with its Info.plist, interface file and texts
#   lib/libTellvane.so, .a         the same binary by its linker name, and the static library
#   include/Tellvane, include/ios  the public headers
#   lib/cmake/Tellvane, lib/pkgconfig
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# Checked before the first file is installed, so that a partial build leaves no incomplete prefix.
install(CODE [[
foreach(file IN ITEMS "$<TARGET_FILE:ios>" "$<TARGET_FILE:tellvane_static>" "$<TARGET_FILE:tellvane_shared>")
  if(NOT EXISTS "${file}")
    message(FATAL_ERROR "${file} has not been built. Nothing was installed; build everything first (scripts/build release).")
  endif()
endforeach()
]])

set(framework ${CMAKE_INSTALL_LIBDIR}/Tellvane.framework)
target_compile_features(ios INTERFACE cxx_std_20)
set_target_properties(tellvane_shared PROPERTIES EXPORT_NAME Tellvane INSTALL_RPATH "$ORIGIN/..")
set_target_properties(tellvane_static PROPERTIES EXPORT_NAME TellvaneStatic)
# CMake adds the folder of a library to a host's run path only if its name has "lib" and ".so".
target_link_options(tellvane_shared INTERFACE "$<INSTALL_INTERFACE:LINKER:-rpath,$<INSTALL_PREFIX>/${framework}>")
install(TARGETS ios EXPORT Tellvane LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ios)
install(TARGETS tellvane_static EXPORT Tellvane ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS tellvane_shared EXPORT Tellvane LIBRARY DESTINATION ${framework}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_BINARY_DIR}/Frameworks/Tellvane.framework DESTINATION ${CMAKE_INSTALL_LIBDIR}
  FILES_MATCHING PATTERN Info.plist PATTERN "*.strings" PATTERN "*.xib")
file(CREATE_LINK Tellvane.framework/Tellvane ${PROJECT_BINARY_DIR}/libTellvane.so SYMBOLIC)
install(FILES ${PROJECT_BINARY_DIR}/libTellvane.so DESTINATION ${CMAKE_INSTALL_LIBDIR})

get_property(headers GLOBAL PROPERTY TELLVANE_PUBLIC_HEADERS)
install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Tellvane)
get_property(frameworks GLOBAL PROPERTY IOS_FRAMEWORKS)
foreach(framework IN LISTS frameworks)
  get_target_property(headers ios_${framework}_headers IOS_PUBLIC_HEADERS)
  install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ios/${framework})
endforeach()

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/Tellvane)
configure_package_config_file(cmake/TellvaneConfig.cmake.in ${PROJECT_BINARY_DIR}/TellvaneConfig.cmake
  INSTALL_DESTINATION ${package}
  PATH_VARS CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TellvaneConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TellvaneConfig.cmake ${PROJECT_BINARY_DIR}/TellvaneConfigVersion.cmake
  DESTINATION ${package})
install(EXPORT Tellvane NAMESPACE Tellvane:: FILE TellvaneTargets.cmake DESTINATION ${package})

# The prefix is derived from the file's location, so that an installation can be moved.
file(RELATIVE_PATH TELLVANE_PKGCONFIG_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
foreach(kind IN ITEMS Tellvane TellvaneStatic)
  configure_file(cmake/${kind}.pc.in ${PROJECT_BINARY_DIR}/${kind}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${kind}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
