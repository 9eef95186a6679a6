cmake_minimum_required(VERSION 3.25)
project(headers LANGUAGES CXX)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_EXTENSIONS OFF)
find_package(tavrin 0.1 REQUIRED)

add_library(headers OBJECT headers.cpp)
target_link_libraries(headers PRIVATE
    tavrin::tavrin-lib tavrin::Graphics tavrin::ColorMap tavrin::bundle-tools)
