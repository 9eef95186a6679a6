# All external libraries, found once for the whole tree. Each folder links those that it uses. packages.txt lists their
# packages.
find_package(PkgConfig REQUIRED)

find_package(fmt REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(pugixml REQUIRED)
find_package(CLI11 REQUIRED)
find_package(yaml-cpp REQUIRED)
find_package(VTK 9.1 REQUIRED COMPONENTS CommonCore CommonDataModel IOCore IOLegacy IOXML)

pkg_check_modules(epoxy REQUIRED IMPORTED_TARGET epoxy)
pkg_check_modules(egl REQUIRED IMPORTED_TARGET egl)
pkg_check_modules(cairo REQUIRED IMPORTED_TARGET cairo)
pkg_check_modules(libpng REQUIRED IMPORTED_TARGET libpng)
pkg_check_modules(libdeflate REQUIRED IMPORTED_TARGET libdeflate)

find_package(benchmark REQUIRED)
if(BUILD_TESTING)
    find_package(GTest REQUIRED)
endif()
