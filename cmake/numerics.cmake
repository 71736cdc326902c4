# Single precision must be IEEE single on every machine: no fused multiply-add, no x87 registers.
add_compile_options(-ffp-contract=off)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "86|AMD64" AND CMAKE_SIZEOF_VOID_P EQUAL 4)
  add_compile_options(-msse2 -mfpmath=sse)
endif()
# 32-bit Windows calls with stacks aligned to 4 bytes; vectors need 16.
if(WIN32)
  add_compile_options(-mincoming-stack-boundary=2)
endif()
