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
get_property(TRACERY_COMPONENTS GLOBAL PROPERTY TRACERY_COMPONENTS)
configure_package_config_file(cmake/traceryConfig.cmake.in ${PROJECT_BINARY_DIR}/traceryConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/traceryConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/traceryConfig.cmake ${PROJECT_BINARY_DIR}/traceryConfigVersion.cmake
        DESTINATION ${package_dir})

foreach(library tracery tracery_embedded_host)
  configure_file(cmake/${library}.pc.in ${PROJECT_BINARY_DIR}/${library}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${library}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()

if(TARGET tracery-scope)
  file(RELATIVE_PATH library_from_program /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${CMAKE_INSTALL_LIBDIR})
  set_target_properties(tracery-scope PROPERTIES INSTALL_RPATH "$ORIGIN/${library_from_program}")
  install(TARGETS tracery-scope RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  # The program tells its own manual page and completion, so that they say what its options are.
  set(manual ${PROJECT_BINARY_DIR}/tracery-scope.1)
  set(completion ${PROJECT_BINARY_DIR}/tracery-scope.bash)
  add_custom_command(
    OUTPUT ${manual} ${completion}
    COMMAND tracery-scope --manual > ${manual}
    COMMAND tracery-scope --bash-completion > ${completion}
    DEPENDS tracery-scope
    VERBATIM)
  add_custom_target(tracery-scope-manual ALL DEPENDS ${manual} ${completion})
  install(FILES ${manual} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(
    FILES ${completion}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME tracery-scope)
endif()

install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} RENAME copyright)

# A Debian package of everything: cpack -G DEB in the folder of a build. It takes dpkg-dev to tell what it depends on.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tracery)
set(CPACK_PACKAGE_VENDOR tracery)
set(CPACK_PACKAGE_CONTACT "the tracery developers <tracery@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# What the headers and the package files ask of those who build with them; the font is what pictures are written in.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "fonts-dejavu-core")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "libboost-dev, libboost-thread-dev, libboost-chrono-dev, libsndfile1-dev, libcairo2-dev, pkg-config")
include(CPack)
