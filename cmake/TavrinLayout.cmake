# The build tree has the same folders as an installation, so that a program finds its libraries, plug-ins and resources
# in the same way in both, and both can be moved as a whole.
set(CMAKE_INSTALL_LIBDIR lib CACHE PATH "Folder of the libraries below the installation prefix")
include(GNUInstallDirs)

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")

# Below lib/, in the build tree and in an installation.
set(TAVRIN_PLUGIN_SUBDIR tavrin/plugins)

# For programs in bin/ and libraries in lib/. Plug-ins are in a deeper folder; tavrin_add_plugin() sets their path.
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN/../lib" "$ORIGIN")

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
