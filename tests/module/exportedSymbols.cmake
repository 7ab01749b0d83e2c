# cmake -DNM=... -DLIBRARY=... -P: the library exports its C entry points and what is of its namespace, nothing else,
# and nothing of the bindings within.
execute_process(COMMAND ${NM} -D -C --defined-only ${LIBRARY} OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" lines "${listing}")
foreach(line IN LISTS lines)
  string(REGEX REPLACE "^[0-9a-f]+ . " "" name "${line}")
  if(name MATCHES "tracery::binding::"
     OR NOT name MATCHES "^(typeinfo for |typeinfo name for |vtable for |non-virtual thunk to )?tracery::")
    list(APPEND names ${name})
  endif()
endforeach()
set(expected QueryVTFcnTable_tracery SetScopeRefreshRateImpl VTInitialize_tracery VTTerminate_tracery
             tracery_build_date tracery_relative_path tracery_version)
list(SORT names)
if(NOT names STREQUAL expected)
  message(FATAL_ERROR "exported:\n${names}\nexpected:\n${expected}")
endif()
