# What an install prefix holds:
#   lib/libios.so                  the platform
#   lib/Tellvane.framework/        the library, shared, with its Info.plist, interface file and texts
#   lib/libTellvane.so, .a         the same binary by its linker name, and the static library
#   include/Tellvane, include/ios  the public headers
#   lib/cmake/Tellvane, lib/pkgconfig
#   bin/tellvane-sim               phones for programs, with its manual page and completions
#   lib/tellvane/bin/simulator     the phone itself, with its page
#   lib/tellvane/Applications      what the phone comes with: Notes and the companion
#   share/tellvane/flows           flows to play on it
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# Checked before the first file is installed, so that a partial build leaves no incomplete prefix.
install(CODE [[
foreach(file IN ITEMS "$<TARGET_FILE:ios>" "$<TARGET_FILE:tellvane_static>" "$<TARGET_FILE:tellvane_shared>"
    "$<TARGET_FILE:tellvane_sim>" "$<TARGET_FILE:tellvane_simulator>" "$<TARGET_FILE:Notes>" "$<TARGET_FILE:companion_app>")
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

# The phone. Applications find the platform through the phone that starts them, and the library in their own bundles.
set(phone ${CMAKE_INSTALL_LIBDIR}/tellvane)
file(RELATIVE_PATH to_libraries /prefix/${phone}/bin /prefix/${CMAKE_INSTALL_LIBDIR})
set_target_properties(tellvane_simulator PROPERTIES INSTALL_RPATH "$ORIGIN/${to_libraries}")
set_target_properties(Notes PROPERTIES INSTALL_RPATH "$ORIGIN/Frameworks/Tellvane.framework")
install(TARGETS tellvane_sim RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS tellvane_simulator RUNTIME DESTINATION ${phone}/bin)
foreach(application IN ITEMS Notes companion_app)
  get_target_property(bundle ${application} RUNTIME_OUTPUT_DIRECTORY)
  get_filename_component(identifier ${bundle} NAME)
  install(TARGETS ${application} RUNTIME DESTINATION ${phone}/Applications/${identifier})
  install(FILES ${bundle}/Info.plist DESTINATION ${phone}/Applications/${identifier})
  if(application STREQUAL Notes)
    install(CODE "
file(COPY \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${framework}\"
  DESTINATION \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${phone}/Applications/${identifier}/Frameworks\")")
  endif()
endforeach()
install(DIRECTORY examples/flows/ DESTINATION ${CMAKE_INSTALL_DATADIR}/tellvane/flows FILES_MATCHING PATTERN "*.yaml")
install(FILES ${PROJECT_BINARY_DIR}/help/tellvane-sim.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
foreach(completion IN ITEMS bash/bash-completion/completions/tellvane-sim zsh/zsh/site-functions/_tellvane-sim
    fish/fish/vendor_completions.d/tellvane-sim.fish)
  string(REGEX MATCH "^([a-z]+)/(.*)/(.*)$" _ ${completion})
  install(FILES ${PROJECT_BINARY_DIR}/help/tellvane-sim.${CMAKE_MATCH_1} RENAME ${CMAKE_MATCH_3}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/${CMAKE_MATCH_2})
endforeach()

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
  PATH_VARS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_BINDIR)
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
