# Installation: find_package(kro) and pkg-config.
include(CMakePackageConfigHelpers)
set(KRO_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/kro)
set(KRO_LIBRARIES kro)
if(TARGET kro_static)
    list(APPEND KRO_LIBRARIES kro_static)
endif()
install(TARGETS ${KRO_LIBRARIES} EXPORT kroTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/kro DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT kroTargets NAMESPACE kro:: FILE kroTargets.cmake DESTINATION ${KRO_PACKAGE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/kroConfig.cmake.in
    ${PROJECT_BINARY_DIR}/kroConfig.cmake INSTALL_DESTINATION ${KRO_PACKAGE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kroConfigVersion.cmake COMPATIBILITY SameMinorVersion)
# Relative, so that an installed tree can be moved or staged.
file(RELATIVE_PATH KRO_PREFIX_FROM_PC /x/${CMAKE_INSTALL_LIBDIR}/pkgconfig /x)
configure_file(${PROJECT_SOURCE_DIR}/cmake/kro.pc.in ${PROJECT_BINARY_DIR}/kro.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kroConfig.cmake ${PROJECT_BINARY_DIR}/kroConfigVersion.cmake
    DESTINATION ${KRO_PACKAGE_DIR})
install(FILES ${PROJECT_BINARY_DIR}/kro.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
