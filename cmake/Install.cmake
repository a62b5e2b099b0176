# What a program outside the tree needs: the library, its public headers, and a description of both
# for CMake and for pkg-config.
include(CMakePackageConfigHelpers)

install(TARGETS Zelv EXPORT ZelvTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(ZELV_BUILD_APPS)
  file(RELATIVE_PATH to_library /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
  set_target_properties(zelv-tv PROPERTIES INSTALL_RPATH "$ORIGIN/${to_library}")
  install(TARGETS zelv-tv RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

# Which headers are public is found out when they are installed, so that no list can go stale.
install(CODE "set(ZELV_SOURCE_DIR \"${PROJECT_SOURCE_DIR}\")
set(ZELV_INCLUDE_DIR \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_INCLUDEDIR}\")")
install(SCRIPT cmake/InstallHeaders.cmake)

file(GLOB factory_files CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/data/*)
install(FILES ${factory_files} DESTINATION ${CMAKE_INSTALL_DATADIR}/zelv)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Zelv)
install(EXPORT ZelvTargets NAMESPACE Zelv:: DESTINATION ${package_dir})
configure_package_config_file(cmake/ZelvConfig.cmake.in ${PROJECT_BINARY_DIR}/ZelvConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ZelvConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ZelvConfig.cmake ${PROJECT_BINARY_DIR}/ZelvConfigVersion.cmake
        DESTINATION ${package_dir})

file(RELATIVE_PATH to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" to_prefix ${to_prefix})
configure_file(cmake/zelv.pc.in ${PROJECT_BINARY_DIR}/zelv.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zelv.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
