# The few helpers that every folder's CMakeLists.txt uses: one library per folder, one test program per folder.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()

find_program(VMR_CCACHE ccache)
if(VMR_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${VMR_CCACHE}")
endif()

# Warnings, sanitizers and include roots, linked by every target of the project.
add_library(vmr_options INTERFACE)
target_include_directories(vmr_options INTERFACE "${CMAKE_SOURCE_DIR}/src" "${CMAKE_SOURCE_DIR}")
target_compile_options(vmr_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wimplicit-fallthrough -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(vmr_options INTERFACE -Wno-restrict)  # GCC 12 warns falsely on string concatenation
endif()
if(VMR_SANITIZE)
  target_compile_options(vmr_options INTERFACE -fsanitize=${VMR_SANITIZE} -fno-omit-frame-pointer -g1)
  target_link_options(vmr_options INTERFACE -fsanitize=${VMR_SANITIZE})
endif()

# vmr_library(NAME SOURCES a.cpp ... PUBLIC deps... PRIVATE deps...): the library of one folder.
function(vmr_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  target_link_libraries(${name} PUBLIC vmr_options ${arg_PUBLIC} PRIVATE ${arg_PRIVATE})
endfunction()

# vmr_test(NAME SOURCES a.cpp ... LIBS libs... [TIMEOUT s] [SERIAL]): a GoogleTest program whose cases CTest lists one
# by one; SERIAL ones run with no other test beside them, for those that measure real time.
function(vmr_test name)
  cmake_parse_arguments(arg "SERIAL" "TIMEOUT" "SOURCES;LIBS" ${ARGN})
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LIBS} vmr_options vmr_test_support GTest::gmock GTest::gtest_main)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT ${arg_TIMEOUT}
    RUN_SERIAL ${arg_SERIAL})
endfunction()

# vmr_bench(NAME SOURCES a.cpp ... LIBS libs...): a Google Benchmark program.
function(vmr_bench name)
  cmake_parse_arguments(arg "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LIBS} vmr_options benchmark::benchmark_main)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bench")
endfunction()
