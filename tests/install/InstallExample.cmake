# The way a host developer meets the project: install into a fresh prefix,
# build the example host against that prefix alone, run it, and compare
# the frame it captured with the golden image. Under a sanitizer build the
# installed libraries would need the sanitizer's runtime in the host too.
if(TARNWICK_SANITIZE)
  return()
endif()
add_executable(install_capture_check ${CMAKE_CURRENT_LIST_DIR}/CaptureCheckProgram.cpp)
target_link_libraries(install_capture_check PRIVATE tarnwick_test_support)
add_test(NAME install_example_host
  COMMAND ${CMAKE_COMMAND}
          -DBUILD_DIR=${CMAKE_BINARY_DIR}
          -DGENERATOR=${CMAKE_GENERATOR}
          -DEXAMPLE_DIR=${PROJECT_SOURCE_DIR}/examples/host
          -DWORK_DIR=${CMAKE_BINARY_DIR}/test-output/install
          -DCHECKER=$<TARGET_FILE:install_capture_check>
          -P ${CMAKE_CURRENT_LIST_DIR}/install_example.cmake)
set_tests_properties(install_example_host PROPERTIES LABELS "gl;install" RUN_SERIAL TRUE TIMEOUT 900)
