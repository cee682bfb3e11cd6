# What an install prefix holds:
#   lib/libios.so                  the platform
#   lib/Tellvane.framework/        the library, shared, with its Info.plist, interface file and texts
#   lib/libTellvane.so, .a         the same binary by its linker name, and the static library
#   include/Tellvane, include/ios  the public headers
#   lib/cmake/Tellvane, lib/pkgconfig
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set_target_properties(tellvane_shared PROPERTIES INSTALL_RPATH "$ORIGIN/..")
install(TARGETS ios LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS tellvane_static ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS tellvane_shared LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/Tellvane.framework)
install(DIRECTORY ${PROJECT_BINARY_DIR}/Frameworks/Tellvane.framework DESTINATION ${CMAKE_INSTALL_LIBDIR}
  FILES_MATCHING PATTERN Info.plist PATTERN "*.strings" PATTERN "*.xib")
file(CREATE_LINK Tellvane.framework/Tellvane ${PROJECT_BINARY_DIR}/libTellvane.so SYMBOLIC)
install(FILES ${PROJECT_BINARY_DIR}/libTellvane.so DESTINATION ${CMAKE_INSTALL_LIBDIR})

get_target_property(headers tellvane_objects TELLVANE_PUBLIC_HEADERS)
foreach(header IN LISTS headers)
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${PROJECT_SOURCE_DIR}/Tellvane/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Tellvane/${folder})
endforeach()
get_property(frameworks GLOBAL PROPERTY IOS_FRAMEWORKS)
foreach(framework IN LISTS frameworks)
  get_target_property(folder ios_${framework}_objects SOURCE_DIR)
  file(GLOB headers CONFIGURE_DEPENDS ${folder}/*.h)
  list(FILTER headers EXCLUDE REGEX "\\+Private\\.h$")
  install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ios/${framework})
endforeach()

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/Tellvane)
configure_package_config_file(cmake/TellvaneConfig.cmake.in ${PROJECT_BINARY_DIR}/TellvaneConfig.cmake
  INSTALL_DESTINATION ${package}
  PATH_VARS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TellvaneConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TellvaneConfig.cmake ${PROJECT_BINARY_DIR}/TellvaneConfigVersion.cmake
  DESTINATION ${package})

# The prefix is found from where the file lies, so that an installation may be moved.
file(RELATIVE_PATH TELLVANE_PKGCONFIG_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
foreach(kind IN ITEMS Tellvane TellvaneStatic)
  configure_file(cmake/${kind}.pc.in ${PROJECT_BINARY_DIR}/${kind}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${kind}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
