# What `cmake --install` lays down. Everything finds everything else by relative paths, so the folder can be moved.
#
#   bin/orv
#   lib/          liborv.so and liborv_<branch>.so, which must stay side by side, liborv_blas.so, liborv_lapack.so and
#                 libsparseblas.so
#   lib/orv/      libblas.so.3, libfftw3.so.3, libfftw3f.so.3 and the names of FFTW's libraries of threads: a folder of
#                 their own, so that no program meets the stand-ins unasked
#   include/orv/  public headers; compat/ holds those of well-known interfaces
#
# orv.pc and the CMake target orv::orv serve programs against <orv/orv.h>, orv-blas.pc and orv::blas those against
# <cblas.h> or Fortran BLAS, orv-sparseblas.pc and orv::sparseblas those against <blas_sparse.h>.
# Libraries and command are laid down without symbols and lines; both stand in files that debuggers look for in .debug/
# beside each. Components: runtime, development, debug; all by default.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/orv)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)

set(libraries COMPONENT runtime NAMELINK_COMPONENT development)
set(stand_ins orv_blas orv_fftw3 orv_fftw3f)
set(names orv_fftw3_threads orv_fftw3_omp orv_fftw3f_threads orv_fftw3f_omp) # of stand-ins, without code
set_target_properties(${stand_ins} PROPERTIES INSTALL_RPATH "$ORIGIN/..")
set_target_properties(${names} PROPERTIES INSTALL_RPATH "$ORIGIN")
set_target_properties(orv_blas_twin PROPERTIES EXPORT_NAME blas INSTALL_RPATH "$ORIGIN")
set_target_properties(orv_lapack PROPERTIES INSTALL_RPATH "$ORIGIN")
set_target_properties(orv_sparseblas PROPERTIES EXPORT_NAME sparseblas INSTALL_RPATH "$ORIGIN")
set_target_properties(orv_cli PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
install(TARGETS orv_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
install(TARGETS orv EXPORT orvTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} ${libraries}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
foreach(tag ${ORV_BRANCHES})
  install(TARGETS orv_${tag} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime)
endforeach()
install(TARGETS orv_blas_twin orv_sparseblas EXPORT orvTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} ${libraries}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orv/compat)
install(TARGETS orv_lapack LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} ${libraries})
install(TARGETS ${stand_ins} ${names} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/orv COMPONENT runtime NAMELINK_SKIP)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/core/include/orv ${PROJECT_SOURCE_DIR}/frame/include/orv
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/compat/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orv/compat)

# orv_split(TARGET FOLDER): takes the symbols of what has been installed in FOLDER to FOLDER/.debug. The file is made by
# the build: the link to it holds its checksum, whether it is installed or not.
function(orv_split target folder)
  set(file ${PROJECT_BINARY_DIR}/debug/$<TARGET_FILE_NAME:${target}>.debug)
  add_custom_command(OUTPUT debug/${target}.stamp DEPENDS ${target}
    COMMAND ${CMAKE_COMMAND} -E make_directory debug
    COMMAND ${CMAKE_OBJCOPY} --only-keep-debug --compress-debug-sections $<TARGET_FILE:${target}> ${file}
    COMMAND ${CMAKE_COMMAND} -E touch debug/${target}.stamp VERBATIM)
  set_property(TARGET debug_files APPEND PROPERTY SOURCES ${PROJECT_BINARY_DIR}/debug/${target}.stamp)
  install(FILES ${file} DESTINATION ${folder}/.debug COMPONENT debug)
  install(CODE "execute_process(COMMAND_ERROR_IS_FATAL ANY COMMAND
    \"${CMAKE_OBJCOPY}\" --strip-all --remove-section=.gnu_debuglink \"--add-gnu-debuglink=${file}\"
    \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${folder}/$<TARGET_FILE_NAME:${target}>\")" COMPONENT runtime)
endfunction()
if(NOT ORV_SANITIZE)
  add_custom_target(debug_files ALL)
  orv_split(orv_cli ${CMAKE_INSTALL_BINDIR})
  list(TRANSFORM ORV_BRANCHES PREPEND orv_ OUTPUT_VARIABLE branches)
  foreach(library orv ${branches} orv_blas_twin orv_lapack orv_sparseblas)
    orv_split(${library} ${CMAKE_INSTALL_LIBDIR})
  endforeach()
  foreach(library ${stand_ins})
    orv_split(${library} ${CMAKE_INSTALL_LIBDIR}/orv)
  endforeach()
endif()

install(EXPORT orvTargets NAMESPACE orv:: DESTINATION ${package_dir})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/orvConfig.cmake.in ${PROJECT_BINARY_DIR}/orvConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/orvConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/orvConfig.cmake ${PROJECT_BINARY_DIR}/orvConfigVersion.cmake
        DESTINATION ${package_dir})

file(RELATIVE_PATH prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
foreach(package orv orv-blas orv-sparseblas)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${package}.pc.in ${PROJECT_BINARY_DIR}/${package}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${package}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
