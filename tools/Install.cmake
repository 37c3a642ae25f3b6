# The tool, its manual page and the package that find_package(mqf2vxb) finds.

include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/mqf2vxb)

install(TARGETS vxbtool EXPORT mqf2vxbTargets RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${PROJECT_SOURCE_DIR}/docs/man/vxbtool.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

install(EXPORT mqf2vxbTargets NAMESPACE mqf2vxb:: DESTINATION ${package_folder})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/mqf2vxbConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(
    FILES
        mqf2vxbConfig.cmake
        VxbAddModels.cmake
        ${CMAKE_CURRENT_BINARY_DIR}/mqf2vxbConfigVersion.cmake
    DESTINATION ${package_folder})
