# Where pkg-config files lie, so that --prefix at install time and moved trees work.
file(RELATIVE_PATH pc_prefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)

# tracery_library(<name> <sources>... DESCRIPTION <text> [NEEDS <names>...] [MODULES <pkg-config modules>...]
#                 [HEADERS <targets>...])
# A library of programs, tracery::<name>: its headers in include/, its sources in src/. It stands on the libraries it needs
# (tracery::<need>; "tracery" is the engine), on modules that its users link as well, and on headers that they do not see.
# Installed as a component of the package and with a file for pkg-config, so that those who want the engine alone need
# nothing of what the libraries are built on.
function(tracery_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "DESCRIPTION" "NEEDS;MODULES;HEADERS")
  set(target tracery_${name})
  add_library(${target} STATIC ${arg_UNPARSED_ARGUMENTS})
  add_library(tracery::${name} ALIAS ${target})
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name} POSITION_INDEPENDENT_CODE ON)
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_include_directories(
    ${target}
    PUBLIC $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
    PRIVATE src)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:tracery_build_options>)
  foreach(header IN LISTS arg_HEADERS)
    target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:${header}>)
  endforeach()
  foreach(module IN LISTS arg_MODULES)
    target_link_libraries(${target} PRIVATE PkgConfig::${module})
  endforeach()
  foreach(need IN LISTS arg_NEEDS)
    target_link_libraries(${target} PUBLIC tracery::${need})
  endforeach()

  install(
    TARGETS ${target}
    EXPORT tracery_${name}Targets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(
    EXPORT tracery_${name}Targets
    NAMESPACE tracery::
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tracery)
  install(DIRECTORY include/tracery DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

  set(needs ${arg_NEEDS})
  list(REMOVE_ITEM arg_NEEDS tracery)
  set_property(GLOBAL APPEND_STRING PROPERTY TRACERY_COMPONENTS
               "set(tracery_${name}_needs ${arg_NEEDS})\nset(tracery_${name}_modules ${arg_MODULES})\n")
  list(TRANSFORM needs PREPEND tracery_)
  string(REPLACE tracery_tracery tracery needs "${needs}")
  string(JOIN ", " library_requires ${needs} ${arg_MODULES})
  set(library ${target})
  set(library_description ${arg_DESCRIPTION})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in ${PROJECT_BINARY_DIR}/${target}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${target}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()
