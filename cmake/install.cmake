# What `cmake --install` lays down. Everything finds everything else by relative paths, so the folder can be moved.
#
#   lib/        liborv.so and liborv_mc3.so, which must stay side by side
#   lib/orv/    stand-ins under the names of well-known libraries, apart so that no program meets them unasked
#   include/    orv/*.h
#   bin/orv
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/orv)

install(TARGETS orv EXPORT orvTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} INCLUDES DESTINATION include)
install(TARGETS orv_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
set_target_properties(orv_cli PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
install(TARGETS orv_mc3 LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/core/include/orv DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(EXPORT orvTargets NAMESPACE orv:: DESTINATION ${package_dir})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/orvConfig.cmake.in ${PROJECT_BINARY_DIR}/orvConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/orvConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/orvConfig.cmake ${PROJECT_BINARY_DIR}/orvConfigVersion.cmake
        DESTINATION ${package_dir})

file(RELATIVE_PATH prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(${CMAKE_CURRENT_LIST_DIR}/orv.pc.in ${PROJECT_BINARY_DIR}/orv.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/orv.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
