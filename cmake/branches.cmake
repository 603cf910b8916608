# The branches of kernels, a line each, the best first: the core opens the first that the processor can run.
#
#   orv_branch(TAG        in symbols and in the name of the library, liborv_TAG.so
#              CODE n     what dll_cpu_version() answers
#              BYTES n    of a vector register
#              NEEDS ...  what the processor must have, by the names of core/serv/processor.h
#              FLAGS ...) of the compiler
include(cmake/branch.cmake)

orv_branch(mc3 CODE 3 BYTES 16 NEEDS sse42 FLAGS -msse4.2 -mno-avx)

orv_list_branches()
