add_compile_options(-Wall -Wextra -Wpedantic -Wshadow $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>)
if(KELVO_WERROR)
  add_compile_options(-Werror)
endif()
