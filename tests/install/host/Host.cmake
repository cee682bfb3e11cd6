cmake_minimum_required(VERSION 3.20)
project(Host LANGUAGES CXX)
find_package(Tellvane 1 REQUIRED)

add_executable(with_shared main.cpp)
target_link_libraries(with_shared PRIVATE Tellvane::Tellvane)
set_target_properties(with_shared PROPERTIES OUTPUT_NAME host RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/shared)

add_executable(with_static main.cpp)
target_link_libraries(with_static PRIVATE Tellvane::TellvaneStatic)
set_target_properties(with_static PROPERTIES OUTPUT_NAME host RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/static)
tellvane_embed(with_static)
