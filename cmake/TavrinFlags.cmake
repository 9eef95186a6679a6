set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Debug, Release, RelWithDebInfo or MinSizeRel" FORCE)
endif()

option(TAVRIN_WERROR "Treat compiler warnings as errors" ${PROJECT_IS_TOP_LEVEL})
set(TAVRIN_SANITIZE "" CACHE STRING "Sanitizers to build with, as in -fsanitize=..., e.g. address,undefined")

find_package(OpenMP REQUIRED COMPONENTS CXX)

# Every target of this tree links it as PRIVATE: it says how this tree is compiled, which does not concern users of the
# targets.
add_library(tavrin_flags INTERFACE)
target_link_libraries(tavrin_flags INTERFACE OpenMP::OpenMP_CXX)
target_compile_options(tavrin_flags INTERFACE
    -Wall -Wextra -Wpedantic
    -Wshadow -Wconversion -Wno-sign-conversion
    -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Wextra-semi -Wundef
    # g++ 12 reports overlapping copies inside std::string's operator+ that do not exist (GCC bug 105651).
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
    # Vectors wider than the registers of the oldest processors are passed only between inlined functions.
    -Wno-psabi
    # clang warns of simd loops that it does not vectorize, for example at the low optimization level of the tsan build.
    $<$<CXX_COMPILER_ID:Clang>:-Wno-pass-failed>
    $<$<BOOL:${TAVRIN_WERROR}>:-Werror>
    # Results have the same bits on every machine and at every optimization level: no contraction to fused multiply-add,
    # never -ffast-math. The other two flags do not change results; no code reads errno or floating-point traps.
    -ffp-contract=off -fno-math-errno -fno-trapping-math)

if(TAVRIN_SANITIZE)
    # For the whole tree, not through tavrin_flags, because a library that is not sanitized would hide its faults.
    add_compile_options(-fsanitize=${TAVRIN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${TAVRIN_SANITIZE})
    if(TAVRIN_SANITIZE MATCHES thread)
        # ThreadSanitizer cannot see the barriers, reductions and tasks of g++'s OpenMP runtime, which is not
        # instrumented, and reports races in every correct parallel loop. So this build uses clang with LLVM's runtime and
        # its tool Archer, which tells ThreadSanitizer what the runtime does. If the runtime does not find Archer when the
        # program starts, it silently runs without it; therefore Archer is linked. For the inside of the runtime itself
        # the test preset sets TSAN_OPTIONS=ignore_noninstrumented_modules=1.
        find_library(TAVRIN_ARCHER archer PATHS /usr/lib/llvm-16/lib REQUIRED)
        cmake_path(GET TAVRIN_ARCHER PARENT_PATH archerFolder)
        add_link_options(LINKER:--no-as-needed,${TAVRIN_ARCHER},--as-needed,-rpath,${archerFolder})
    endif()
else()
    # A missing library is an error when linking, not when loading. (Sanitizer runtimes are in the executable.)
    add_link_options(LINKER:--no-undefined)
endif()
