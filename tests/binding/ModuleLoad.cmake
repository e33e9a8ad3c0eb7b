# Loading and unloading the backend as a host does, with dlopen and dlclose.
# The program links only the host libraries, as a host that knows nothing of
# OpenSceneGraph or assimp would: everything the backend brings in must go
# again with it. Linked with LeakSanitizer, which fails the run when the
# load-use-unload rounds leave memory behind.
add_executable(binding_module_load_tests ${CMAKE_CURRENT_LIST_DIR}/ModuleLoadProgram.cpp)
target_compile_options(binding_module_load_tests PRIVATE -fno-omit-frame-pointer)
if(NOT TARNWICK_SANITIZE)  # AddressSanitizer checks leaks by itself
  target_link_options(binding_module_load_tests PRIVATE -fsanitize=leak)
endif()
target_link_libraries(binding_module_load_tests PRIVATE
  TarnwickStream TarnwickRender TarnwickCommon ${CMAKE_DL_LIBS} GTest::gtest GTest::gtest_main)
target_compile_definitions(binding_module_load_tests PRIVATE
  TARNWICK_OSG_LIBRARY="$<TARGET_FILE:TarnwickOSG>")
add_dependencies(binding_module_load_tests TarnwickOSG)
tarnwick_discover_tests(binding_module_load_tests "unit;binding" 300)
