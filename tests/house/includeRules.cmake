# Who may include what: the table of HACKING.md. cmake -DROOT=... -P includeRules.cmake
set(standard "<([a-z_0-9]+|cxxabi.h)>")
set(system "<(unistd|dlfcn|fcntl|poll|signal|link|sys/[a-z]+)\\.h>")
set(boost "<boost/[a-z_./]+>")
set(seam "<tracery/(export|host/[A-Za-z]+)\\.h>")
set(public "<tracery/(host/)?[A-Za-z]+\\.h>")
set(embedded "<tracery/embedded/[A-Za-z]+\\.h>")
set(libraries "<tracery/(basics|recordings|captures|figures|measures)/[A-Za-z]+\\.h>")
set(own "\"[A-Za-z]+\\.h\"")
set(basics "<tracery/basics/[A-Za-z]+\\.h>")
set(captures "<tracery/captures/[A-Za-z]+\\.h>")
set(recordings "<tracery/recordings/[A-Za-z]+\\.h>")

# A row: files (the first row that matches counts), then what they may include.
set(rows
    "include/tracery/host/.*|${standard}|${boost}|${seam}"
    "include/tracery/.*|${standard}|${boost}|${public}"
    "src/host/module.cpp|${standard}|${public}|\"host/.*\""
    "src/host/.*|${standard}|${boost}|${seam}|\"(host|support)/.*\""
    "src/bindings/.*|${standard}|${boost}|${public}|\"(bindings|host)/.*\""
    "src/support/.*|${standard}|<[a-z]*intrin\\.h>|${public}|\"support/.*\""
    "src/buffers/.*|${standard}|${boost}|${public}|\"(buffers|support)/.*\""
    "src/trigger/.*|${standard}|${public}|\"(trigger|support)/.*\""
    "src/display/.*|${standard}|${boost}|${public}|\"(display|support)/.*\""
    "src/scheduling/.*|${standard}|${boost}|${public}|\"(scheduling|support)/.*\""
    "hosts/embedded/include/.*|${standard}|${boost}|${seam}|${embedded}"
    "hosts/embedded/src/.*|${standard}|${system}|${boost}|${seam}|${embedded}|${own}"
    "libs/basics/include/.*|${standard}|${basics}"
    "libs/basics/src/.*|${standard}|${system}|${basics}|<fast_float/.*>|${own}"
    "libs/recordings/include/.*|${standard}|${public}|${basics}|${recordings}"
    "libs/recordings/src/.*|${standard}|${system}|${public}|${basics}|${recordings}|<(sndfile.h|fast_float/.*|nlohmann/.*)>|${own}"
    "libs/captures/include/.*|${standard}|${public}|${basics}|${recordings}|${captures}"
    "libs/captures/src/.*|${standard}|${system}|${public}|${basics}|${recordings}|${captures}|${own}"
    "libs/figures/include/.*|${standard}|${basics}|<tracery/figures/[A-Za-z]+\\.h>"
    "libs/figures/src/.*|${standard}|${basics}|<tracery/figures/[A-Za-z]+\\.h>|<cairo.*>|${own}"
    "libs/measures/include/.*|${standard}|${public}|${basics}|${recordings}|<tracery/measures/[A-Za-z]+\\.h>"
    "libs/measures/src/.*|${standard}|${public}|${basics}|${recordings}|<tracery/measures/[A-Za-z]+\\.h>|<(unsupported/)?Eigen/.*>|${own}"
    "apps/scope/stream/.*|${standard}|${system}|${public}|${libraries}|\"(libraries|UsageError|Progress|stream/[A-Za-z]+)\\.h\""
    "apps/scope/display/.*|${standard}|${system}|${public}|${libraries}|${embedded}|\"(libraries|UsageError|Progress|(stream|display)/[A-Za-z]+)\\.h\""
    "apps/scope/trigger/.*|${standard}|${public}|${libraries}|${embedded}|\"(libraries|UsageError|Progress|(stream|display|trigger)/[A-Za-z]+)\\.h\""
    "apps/scope/.*|<.*>|\"((cli|commands|display|stream|trigger)/)?[A-Za-z]+\\.h\""
    "examples/.*|${standard}|${public}|${embedded}|${libraries}|\"BareHost.h\"")

set(complaints "")
set(includes 0)
file(GLOB_RECURSE files RELATIVE ${ROOT} ${ROOT}/include/*.h ${ROOT}/src/*.h ${ROOT}/src/*.cpp ${ROOT}/hosts/*.h
     ${ROOT}/hosts/*.cpp ${ROOT}/libs/*.h ${ROOT}/libs/*.cpp ${ROOT}/apps/*.h ${ROOT}/apps/*.cpp ${ROOT}/examples/*.h ${ROOT}/examples/*.cpp)
foreach(file IN LISTS files)
  set(allowed "")
  foreach(row IN LISTS rows)
    string(REGEX MATCH "^[^|]*" pattern "${row}")
    if(file MATCHES "^${pattern}$")
      string(LENGTH "${pattern}|" start)
      string(SUBSTRING "${row}" ${start} -1 allowed)
      break()
    endif()
  endforeach()
  file(STRINGS ${ROOT}/${file} lines REGEX "^ *# *include")
  foreach(line IN LISTS lines)
    math(EXPR includes "${includes} + 1")
    string(REGEX REPLACE "^ *# *include *([<\"][^>\"]*[>\"]).*" "\\1" header "${line}")
    if(NOT header MATCHES "^(${allowed})$")
      string(APPEND complaints "${file} may not include ${header}\n")
    endif()
  endforeach()
endforeach()
if(includes LESS 500)
  string(APPEND complaints "only ${includes} includes were found below ${ROOT}\n")
endif()
if(complaints)
  message(FATAL_ERROR "${complaints}")
endif()
