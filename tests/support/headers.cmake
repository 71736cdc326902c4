# The header-only libraries of the tests, from the system's own headers: a cross compiler must not see the rest of them.
# And the module that finds the cases of doctest.
set(headers ${PROJECT_BINARY_DIR}/headers)
foreach(library doctest nlohmann)
  find_path(${library}_headers ${library} PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  file(MAKE_DIRECTORY ${headers})
  file(CREATE_LINK ${${library}_headers}/${library} ${headers}/${library} SYMBOLIC)
endforeach()
foreach(target doctest::doctest nlohmann_json::nlohmann_json)
  add_library(${target} INTERFACE IMPORTED)
  target_include_directories(${target} INTERFACE ${headers})
endforeach()
list(APPEND CMAKE_MODULE_PATH ${doctest_headers}/../lib/cmake/doctest)
