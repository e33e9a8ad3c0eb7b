# Build step behind the target tarnwick_atmosphere_tables (cmake -P):
# brings the atmosphere's three tables into OUTPUT_DIR. Generating them takes
# minutes on a software renderer, so they are kept in CACHE_DIR, one folder
# per key: the hash of the generator's sources (passes, model text,
# parameters, table sizes). A build whose key is already there copies them.
#
# Variables: TOOL, OUTPUT_DIR, CACHE_DIR, KEY_FILES (|-separated).
cmake_minimum_required(VERSION 3.21)

set(_names transmittance_texture.data scattering_texture.data irradiance_texture.data)
set(_sizes 262144 16777216 16384)

function(tables_complete dir result)
  set(${result} TRUE PARENT_SCOPE)
  foreach(i RANGE 2)
    list(GET _names ${i} name)
    list(GET _sizes ${i} size)
    if(NOT EXISTS "${dir}/${name}")
      set(${result} FALSE PARENT_SCOPE)
      return()
    endif()
    file(SIZE "${dir}/${name}" actual)
    if(NOT actual EQUAL size)
      set(${result} FALSE PARENT_SCOPE)
      return()
    endif()
  endforeach()
endfunction()

string(REPLACE "|" ";" KEY_FILES "${KEY_FILES}")
set(_key_text "")
foreach(f ${KEY_FILES})
  file(SHA256 "${f}" h)
  get_filename_component(n "${f}" NAME)
  string(APPEND _key_text "${n}:${h}\n")
endforeach()
string(SHA256 _key "${_key_text}")
string(SUBSTRING "${_key}" 0 16 _key)
set(_entry "${CACHE_DIR}/${_key}")

file(MAKE_DIRECTORY "${CACHE_DIR}")
# Two builds on one machine (the plain and the sanitizer build) may get here
# together: one generates, the other waits and copies.
file(LOCK "${CACHE_DIR}/${_key}.lock" GUARD PROCESS TIMEOUT 3600)

tables_complete("${_entry}" _have)
if(_have)
  message(STATUS "Atmosphere tables: up to date in ${_entry}")
else()
  message(STATUS "Atmosphere tables: generating into ${_entry} (a few minutes on a software renderer)")
  set(_work "${_entry}.partial")
  file(REMOVE_RECURSE "${_work}")
  file(MAKE_DIRECTORY "${_work}")
  string(TIMESTAMP _start "%s")
  # The GL driver keeps memory to the end of the process; a sanitizer build
  # of the tool would report it as a leak.
  execute_process(COMMAND ${CMAKE_COMMAND} -E env ASAN_OPTIONS=detect_leaks=0 "${TOOL}" "${_work}"
                  RESULT_VARIABLE _rc)
  tables_complete("${_work}" _made)
  if(NOT _rc EQUAL 0 OR NOT _made)
    file(REMOVE_RECURSE "${_work}")
    message(FATAL_ERROR "Atmosphere tables: the generator failed (${_rc})")
  endif()
  string(TIMESTAMP _end "%s")
  math(EXPR _seconds "${_end} - ${_start}")
  message(STATUS "Atmosphere tables: generated in ${_seconds} s")
  file(REMOVE_RECURSE "${_entry}")
  file(RENAME "${_work}" "${_entry}")
endif()

file(MAKE_DIRECTORY "${OUTPUT_DIR}")
foreach(name ${_names})
  file(COPY_FILE "${_entry}/${name}" "${OUTPUT_DIR}/${name}")
endforeach()
file(LOCK "${CACHE_DIR}/${_key}.lock" RELEASE)
