# Shader sources are plain .glsl files in the tree, compiled into the library
# as string literals so that the backend needs no resource files for them.
# The generated source defines the table behind programs/KVShaderSource.h.
set(_kv_embed_shaders_script ${CMAKE_CURRENT_LIST_DIR}/KVEmbedShadersScript.cmake)

function(tarnwick_embed_shaders target shader_dir)
  file(GLOB _glsl CONFIGURE_DEPENDS ${shader_dir}/*.glsl)
  set(_out ${CMAKE_BINARY_DIR}/generated/programs/KVShaderSourceData.cpp)
  add_custom_command(
    OUTPUT ${_out}
    COMMAND ${CMAKE_COMMAND} -DSHADER_DIR=${shader_dir} -DOUTPUT=${_out}
            -P ${_kv_embed_shaders_script}
    DEPENDS ${_glsl} ${_kv_embed_shaders_script}
    COMMENT "Embedding GLSL sources from ${shader_dir}"
    VERBATIM)
  target_sources(${target} PRIVATE ${_out})
endfunction()
