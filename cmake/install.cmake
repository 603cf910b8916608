# What `cmake --install` lays down. Everything finds everything else by relative paths, so the folder can be moved.
#
#   bin/orv
#   lib/          liborv.so and liborv_<branch>.so, which must stay side by side, liborv_blas.so and liborv_lapack.so
#   lib/orv/      libblas.so.3: a folder of its own, so that no program meets the stand-in unasked
#   include/orv/  public headers; compat/ holds those of well-known interfaces
#
# orv.pc and the CMake target orv::orv serve programs against <orv/orv.h>, orv-blas.pc and orv::blas those against
# <cblas.h> or Fortran BLAS.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/orv)

set_target_properties(orv_blas PROPERTIES INSTALL_RPATH "$ORIGIN/..")
set_target_properties(orv_blas_twin PROPERTIES EXPORT_NAME blas INSTALL_RPATH "$ORIGIN")
set_target_properties(orv_cli PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
install(TARGETS orv_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS orv EXPORT orvTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
foreach(tag ${ORV_BRANCHES})
  install(TARGETS orv_${tag} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
endforeach()
install(TARGETS orv_blas_twin EXPORT orvTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orv/compat)
set_target_properties(orv_lapack PROPERTIES INSTALL_RPATH "$ORIGIN")
install(TARGETS orv_lapack LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS orv_blas LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/orv NAMELINK_SKIP)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/core/include/orv DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/compat/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orv/compat)

install(EXPORT orvTargets NAMESPACE orv:: DESTINATION ${package_dir})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/orvConfig.cmake.in ${PROJECT_BINARY_DIR}/orvConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/orvConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/orvConfig.cmake ${PROJECT_BINARY_DIR}/orvConfigVersion.cmake
        DESTINATION ${package_dir})

file(RELATIVE_PATH prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
foreach(package orv orv-blas)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${package}.pc.in ${PROJECT_BINARY_DIR}/${package}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${package}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
