# Builds the examples against the installed libraries; installed beside them as their CMakeLists.txt.
cmake_minimum_required(VERSION 3.25)
project(orvcapsule-examples LANGUAGES CXX)
find_package(orvcapsule 0.1 REQUIRED)

# What a program needs of the system: its arguments as UTF-8, and a console that shows it.
if(WIN32)
  set(system Windows)
else()
  set(system Posix)
endif()
add_library(support STATIC tools/support/Arguments${system}.cpp tools/support/Console${system}.cpp)
target_include_directories(support PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}")
target_link_libraries(support PUBLIC orvcapsule::orvcapsule)
if(WIN32)
  target_compile_definitions(support PRIVATE NOMINMAX)
  target_link_libraries(support PRIVATE shell32)
endif()

foreach(example IN ITEMS browse edit stock watch)
  add_executable(${example} ${example}.cpp)
  target_link_libraries(${example} PRIVATE support)
endforeach()
