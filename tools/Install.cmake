# The tool, its completion scripts and the package that find_package(mqf2vxb) finds.

include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/mqf2vxb)

install(TARGETS vxbtool EXPORT mqf2vxbTargets RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

function(install_completion shell folder name)
    set(script ${CMAKE_CURRENT_BINARY_DIR}/completion.${shell})
    add_custom_command(OUTPUT ${script}
        COMMAND vxbtool completion ${shell} > ${script}
        DEPENDS vxbtool
        VERBATIM)
    add_custom_target(vxbtool_completion_${shell} ALL DEPENDS ${script})
    install(FILES ${script} DESTINATION ${CMAKE_INSTALL_DATADIR}/${folder} RENAME ${name})
endfunction()
install_completion(bash bash-completion/completions vxbtool)
install_completion(zsh zsh/site-functions _vxbtool)
install_completion(fish fish/vendor_completions.d vxbtool.fish)

install(EXPORT mqf2vxbTargets NAMESPACE mqf2vxb:: DESTINATION ${package_folder})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/mqf2vxbConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(
    FILES
        mqf2vxbConfig.cmake
        VxbAddModels.cmake
        ${CMAKE_CURRENT_BINARY_DIR}/mqf2vxbConfigVersion.cmake
    DESTINATION ${package_folder})
