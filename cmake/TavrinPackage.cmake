# The package for find_package(tavrin): the published libraries, as targets with the prefix tavrin::.
include(CMakePackageConfigHelpers)

set(packageFolder "${CMAKE_INSTALL_LIBDIR}/cmake/tavrin")
set(versionFile "${PROJECT_BINARY_DIR}/tavrin-config-version.cmake")
write_basic_package_version_file("${versionFile}" COMPATIBILITY SameMinorVersion)
install(EXPORT tavrin-targets NAMESPACE tavrin:: DESTINATION "${packageFolder}")
install(FILES "${PROJECT_SOURCE_DIR}/cmake/tavrin-config.cmake" "${versionFile}"
    DESTINATION "${packageFolder}")
