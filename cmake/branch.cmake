# liborv_mc3.so: every kernel, built for SSE4.2 and nothing wider.
file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/frame/*.cpp ${PROJECT_SOURCE_DIR}/blas/*.cpp
     ${PROJECT_SOURCE_DIR}/blas/gemm/*.cpp ${PROJECT_SOURCE_DIR}/blas/level3/*.cpp
     ${PROJECT_SOURCE_DIR}/lapack_ps/*.cpp
     ${PROJECT_SOURCE_DIR}/trans/*.cpp ${PROJECT_SOURCE_DIR}/xblas/*.cpp)
add_library(orv_mc3 MODULE ${sources})
# The parts of a complex sum are two chains of additions that run side by side; the compiler would put both in one
# register and shuffle them for every product.
file(GLOB extended ${PROJECT_SOURCE_DIR}/xblas/*.cpp)
set_source_files_properties(${extended} PROPERTIES COMPILE_OPTIONS -fno-tree-slp-vectorize)
# Where elements do not meet, vectors of them are the compiler's work, for all types.
set_source_files_properties(${PROJECT_SOURCE_DIR}/xblas/axpby.cpp PROPERTIES COMPILE_OPTIONS
                            "-fno-tree-slp-vectorize;-ftree-loop-vectorize;-fvect-cost-model=dynamic")

target_compile_options(orv_mc3 PRIVATE
  -msse4.2 -mno-avx          # the branch's instruction set
  -ffp-contract=off          # one rounding for each product and each sum
  -fno-math-errno            # square roots are one instruction, no call
  -fno-exceptions -fno-rtti -fno-threadsafe-statics
  -fno-gnu-unique            # a unique symbol would keep the library loaded for ever
  -fno-tree-loop-distribute-patterns # no loop becomes a call of memcpy or memset
  -fno-builtin-sin -fno-builtin-cos -fno-builtin-printf) # no sincos, no puts
target_compile_definitions(orv_mc3 PRIVATE
  ORV_VERSION="${PROJECT_VERSION}" # the core compares it with its own
  __NO_INLINE__)                   # the C library's headers put strtol in place of atol

# Imports are resolved at run time from the core library and the C library, so nothing is linked but libdl.
# The branch calls its own kernels directly. What a caller may replace is imported, or defined here and listed.
set(map ${PROJECT_SOURCE_DIR}/frame/branch.map)
set(replaceable ${PROJECT_SOURCE_DIR}/frame/replaceable.map)
set_target_properties(orv_mc3 PROPERTIES LINK_DEPENDS "${map};${replaceable}")
target_link_options(orv_mc3 PRIVATE -Wl,--version-script=${map} -Wl,-Bsymbolic -Wl,--dynamic-list=${replaceable} -Wl,--hash-style=gnu -Wl,-z,relro,-z,now)
if(NOT ORV_SANITIZE)
  target_compile_options(orv_mc3 PRIVATE -fno-stack-protector)
  # Nothing is to be done when it is opened or closed, so it takes no start files either.
  target_link_options(orv_mc3 PRIVATE -nostartfiles -nodefaultlibs -Wl,--no-as-needed -l:libdl.so.2 -Wl,--as-needed)
endif()
