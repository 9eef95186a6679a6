# tavrin_add_plugin(<name> <sources>...)
# A plug-in library lib<name>.so, in the folder where the program looks for plug-ins.
function(tavrin_add_plugin name)
    add_library(${name} MODULE ${ARGN})
    target_link_libraries(${name} PRIVATE tavrin_flags)
    set_target_properties(${name} PROPERTIES
        LIBRARY_OUTPUT_DIRECTORY "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/${TAVRIN_PLUGIN_SUBDIR}"
        INSTALL_RPATH "$ORIGIN/../..")
    install(TARGETS ${name} LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}/${TAVRIN_PLUGIN_SUBDIR}")
endfunction()

# tavrin_publish_library(<name> <folder of headers> [<private folder inside>...])
# Installs a library with its headers, for the program and for plug-ins that are built elsewhere.
function(tavrin_publish_library name headers)
    set(private "")
    foreach(folder IN LISTS ARGN)
        list(APPEND private PATTERN "${folder}" EXCLUDE)
    endforeach()
    target_include_directories(${name} INTERFACE "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
    install(TARGETS ${name} EXPORT tavrin-targets LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
    install(DIRECTORY ${headers}
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
        FILES_MATCHING PATTERN "*.hpp" ${private})
endfunction()

# tavrin_add_test(<name> SOURCES <file>... [LIBRARIES <target>...] [ALONE])
# A GoogleTest program. Each of its tests is a test of ctest, run by itself if ALONE, for tests of time or memory.
function(tavrin_add_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "ALONE" "" "SOURCES;LIBRARIES")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE tavrin_flags ${arg_LIBRARIES} GTest::gtest_main)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST
        PROPERTIES TIMEOUT 300 RUN_SERIAL "${arg_ALONE}")
endfunction()

if(BUILD_TESTING)
    include(GoogleTest)
endif()
