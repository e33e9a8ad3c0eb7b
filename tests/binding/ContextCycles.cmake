# A hundred create/initialize/destroy cycles of a render context under
# LeakSanitizer. Only the program is linked with the sanitizer: its
# allocator replacement then sees every allocation of the backend too, so
# the backend needs no sanitizer build of its own.
add_executable(binding_context_cycles_leak_tests ${CMAKE_CURRENT_LIST_DIR}/ContextCyclesLeakProgram.cpp)
target_compile_options(binding_context_cycles_leak_tests PRIVATE -fno-omit-frame-pointer)
target_link_options(binding_context_cycles_leak_tests PRIVATE -fsanitize=leak)
target_include_directories(binding_context_cycles_leak_tests PRIVATE ${CMAKE_CURRENT_SOURCE_DIR} ${CMAKE_CURRENT_LIST_DIR})
target_link_libraries(binding_context_cycles_leak_tests PRIVATE TarnwickOSGInternal tarnwick_test_support GTest::gtest GTest::gtest_main)
add_test(NAME binding_context_cycles_leak
  COMMAND sh ${CMAKE_CURRENT_LIST_DIR}/context_cycles_leak.sh
          $<TARGET_FILE:binding_context_cycles_leak_tests> ${CMAKE_CURRENT_LIST_DIR}/lsan.supp)
set_tests_properties(binding_context_cycles_leak PROPERTIES
  LABELS "gl;binding" RUN_SERIAL TRUE TIMEOUT 900)
