if(KELVO_SANITIZE)
  add_compile_options(-fsanitize=${KELVO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KELVO_SANITIZE})
endif()
