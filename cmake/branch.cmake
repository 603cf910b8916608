# How the library of kernels of one branch is built. What distinguishes branches stands in branches.cmake.
set(generated ${PROJECT_BINARY_DIR}/generated)
include_directories(${generated})
add_custom_target(orv_branches) # all of them

function(orv_branch tag)
  cmake_parse_arguments(branch "" "CODE;BYTES" "NEEDS;FLAGS" ${ARGN})
  configure_file(${PROJECT_SOURCE_DIR}/frame/branch.h.in ${generated}/${tag}/frame/branch.h @ONLY)
  foreach(map branch replaceable)
    configure_file(${PROJECT_SOURCE_DIR}/frame/${map}.map.in ${generated}/${tag}/${map}.map @ONLY)
  endforeach()
  orv_kernel_options(orv_${tag}_options ${tag} "${branch_FLAGS}")

  set(folders frame blas blas/gemm blas/level3 lapack_ps trans xblas dft dft/methods dft/compute dft/batch dft/primitives
      dft/primitives/dft dft/primitives/fft dft/primitives/convolution conv pde/trig pde/poisson)
  list(TRANSFORM folders REPLACE "(.+)" "${PROJECT_SOURCE_DIR}/\\1/*.cpp")
  file(GLOB sources CONFIGURE_DEPENDS ${folders})
  add_library(orv_${tag} MODULE ${sources})
  target_link_libraries(orv_${tag} PRIVATE orv_${tag}_options)
  # One source, two modules: what differs is the width of an integer, which the module's name tells.
  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/spblas/*.cpp)
  if(sources)
    foreach(module spblas spblas_lp64)
      add_library(orv_${tag}_${module} OBJECT ${sources})
      target_compile_definitions(orv_${tag}_${module} PRIVATE ORV_SPBLAS=${module})
      target_link_libraries(orv_${tag}_${module} PRIVATE orv_${tag}_options)
      target_link_libraries(orv_${tag} PRIVATE orv_${tag}_${module})
    endforeach()
  endif()

  # Imports are resolved at run time from the core library and the C library, so nothing is linked but libdl.
  # The branch calls its own kernels directly. What a caller may replace is imported, or defined here and listed.
  set(map ${generated}/${tag}/branch.map)
  set(replaceable ${generated}/${tag}/replaceable.map)
  set_target_properties(orv_${tag} PROPERTIES LINK_DEPENDS "${map};${replaceable}")
  target_link_options(orv_${tag} PRIVATE -Wl,--version-script=${map} -Wl,-Bsymbolic -Wl,--dynamic-list=${replaceable}
                      -Wl,--hash-style=gnu -Wl,-z,relro,-z,now)
  if(NOT ORV_SANITIZE)
    # Nothing is to be done when it is opened or closed, so it takes no start files either.
    target_link_options(orv_${tag} PRIVATE -nostartfiles -nodefaultlibs -Wl,--no-as-needed -l:libdl.so.2 -Wl,--as-needed)
  endif()

  add_dependencies(orv_branches orv_${tag})
  list(JOIN branch_NEEDS " | " needs)
  set_property(GLOBAL APPEND PROPERTY ORV_BRANCHES ${tag})
  set_property(GLOBAL APPEND PROPERTY ORV_BRANCH_LINES
               "X(${tag}, ${branch_CODE}, ${needs})")
  set_target_properties(orv_${tag} PROPERTIES ORV_CODE ${branch_CODE})
endfunction()

# How kernels of a branch are compiled.
function(orv_kernel_options target tag flags)
  add_library(${target} INTERFACE)
  target_include_directories(${target} INTERFACE ${generated}/${tag})
  target_compile_options(${target} INTERFACE
    ${flags}                   # the branch's instruction set
    -pedantic-errors           # a kernel that differs from its prototype is an error, not a warning
    -ffp-contract=off          # one rounding for each product and each sum
    -fno-math-errno            # square roots are one instruction, no call
    -fno-exceptions -fno-rtti -fno-threadsafe-statics
    -fno-gnu-unique            # a unique symbol would keep the library loaded for ever
    -fno-tree-loop-distribute-patterns # no loop becomes a call of memcpy or memset
    -fno-builtin-sin -fno-builtin-cos -fno-builtin-printf) # no sincos, no puts
  target_compile_definitions(${target} INTERFACE
    ORV_VERSION="${PROJECT_VERSION}" # the core compares it with its own
    __NO_INLINE__)                   # the C library's headers put strtol in place of atol
  if(NOT ORV_SANITIZE)
    target_compile_options(${target} INTERFACE -fno-stack-protector)
  endif()
endfunction()

# Once all branches are declared: ORV_BRANCHES, their tags, and the core's table of them.
function(orv_list_branches)
  get_property(tags GLOBAL PROPERTY ORV_BRANCHES)
  get_property(lines GLOBAL PROPERTY ORV_BRANCH_LINES)
  set(ORV_BRANCHES ${tags} PARENT_SCOPE)
  list(JOIN lines " " branches)
  configure_file(${PROJECT_SOURCE_DIR}/core/branch/branches.h.in ${generated}/core/branch/branches.h @ONLY)
endfunction()

# The parts of a complex sum are two chains of additions that run side by side; the compiler would put both in one
# register and shuffle them for every product.
file(GLOB extended ${PROJECT_SOURCE_DIR}/xblas/*.cpp)
# Loops whose elements do not meet say so (omp simd, without OpenMP). All files of a folder have the same flags: they
# share inline functions, of which the linker keeps any one.
set_source_files_properties(${extended} PROPERTIES COMPILE_OPTIONS "-fno-tree-slp-vectorize;-fopenmp-simd")

# Halves of registers are stored by themselves because the ports that shuffle are the busy ones; the compiler would shuffle
# them into whole ones.
file(GLOB transforms ${PROJECT_SOURCE_DIR}/dft/primitives/fft/*.cpp)
set_source_files_properties(${transforms} PROPERTIES COMPILE_OPTIONS -fno-tree-slp-vectorize)

# Of two pointers that move together the compiler would make a register of two lanes, and take it apart for every use.
file(GLOB sparse ${PROJECT_SOURCE_DIR}/spblas/*.cpp)
set_source_files_properties(${sparse} PROPERTIES COMPILE_OPTIONS "-fno-tree-slp-vectorize")

# In loops over strided pairs of singles the compiler's vectors (gcc 12) load the element behind the last one, which may
# be on a page that is not there.
file(GLOB convolutions ${PROJECT_SOURCE_DIR}/conv/*.cpp)
set_source_files_properties(${convolutions} PROPERTIES COMPILE_OPTIONS "-fno-tree-vectorize")
# Loops whose elements do not meet say so, as in xblas/. Texts are put together by the few functions that the branch may
# ask the C library for, not by others that the compiler knows to do the same.
file(GLOB solvers ${PROJECT_SOURCE_DIR}/pde/*/*.cpp)
set_source_files_properties(${solvers} PROPERTIES COMPILE_OPTIONS
                            "-fopenmp-simd;-fno-builtin-fprintf;-fno-builtin-sprintf;-fno-builtin-strncat")
