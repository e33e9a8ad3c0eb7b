# Run by the install_example_host test: cmake -DBUILD_DIR= -DGENERATOR=
# -DEXAMPLE_DIR= -DWORK_DIR= -DCHECKER= -P install_example.cmake
set(prefix ${WORK_DIR}/prefix)
file(REMOVE_RECURSE ${WORK_DIR})

function(run what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE out)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${what} failed (${status}):\n${out}")
  endif()
  set(run_output "${out}" PARENT_SCOPE)
endfunction()

run("install" ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
foreach(file lib/libTarnwickOSG.so lib/libTarnwickRender.so include/TarnwickRender/CKVScene.h
             share/tarnwick/resources/fonts/simhei.ttf lib/cmake/TarnwickOSG/TarnwickOSGConfig.cmake
             lib/pkgconfig/TarnwickOSG.pc)
  if(NOT EXISTS ${prefix}/${file})
    message(FATAL_ERROR "the install lacks ${file}")
  endif()
endforeach()

# The pkg-config files resolve, and name the module where it lies.
find_program(PKG_CONFIG pkg-config)
if(PKG_CONFIG)
  set(pc_env ${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${prefix}/lib/pkgconfig)
  run("pkg-config" ${pc_env} ${PKG_CONFIG} --cflags --libs TarnwickOSG)
  run("pkg-config" ${pc_env} ${PKG_CONFIG} --variable=backend TarnwickOSG)
  string(STRIP "${run_output}" backend)
  if(NOT EXISTS "${backend}")
    message(FATAL_ERROR "pkg-config names the backend '${backend}', which does not exist")
  endif()
endif()

# Only the prefix is searched, so nothing of the build tree can stand in.
run("configuring the example" ${CMAKE_COMMAND} -S ${EXAMPLE_DIR} -B ${WORK_DIR}/example -G "${GENERATOR}"
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF -DCMAKE_BUILD_TYPE=Release)
run("building the example" ${CMAKE_COMMAND} --build ${WORK_DIR}/example)

set(capture ${WORK_DIR}/capture.png)
run("the example host" ${WORK_DIR}/example/tarnwick-example-host ${capture})
message(STATUS "${run_output}")
# The backend finds its resources in the installed layout by itself.
get_filename_component(real_prefix ${prefix} REALPATH)
foreach(line "resources: ${real_prefix}/share/tarnwick/resources" "picked: red box" "unloaded: yes")
  string(FIND "${run_output}" "${line}" found)
  if(found EQUAL -1)
    message(FATAL_ERROR "the example host did not report '${line}'")
  endif()
endforeach()
run("the capture check" ${CHECKER} ${capture})
