include(CMakePackageConfigHelpers)

install(
  TARGETS tracery tracery_embedded_host
  EXPORT traceryTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/tracery hosts/embedded/include/tracery DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_BINARY_DIR}/generated/tracery/export.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tracery)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tracery)
install(
  EXPORT traceryTargets
  NAMESPACE tracery::
  DESTINATION ${package_dir})
configure_package_config_file(cmake/traceryConfig.cmake.in ${PROJECT_BINARY_DIR}/traceryConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/traceryConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/traceryConfig.cmake ${PROJECT_BINARY_DIR}/traceryConfigVersion.cmake
        DESTINATION ${package_dir})

# Relative to where the file lies, so that --prefix at install time and moved trees work.
file(RELATIVE_PATH pc_prefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
foreach(library tracery tracery_embedded_host)
  configure_file(cmake/${library}.pc.in ${PROJECT_BINARY_DIR}/${library}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${library}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()

if(TARGET tracery-scope)
  file(RELATIVE_PATH library_from_program /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${CMAKE_INSTALL_LIBDIR})
  set_target_properties(tracery-scope PROPERTIES INSTALL_RPATH "$ORIGIN/${library_from_program}")
  install(TARGETS tracery-scope RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
