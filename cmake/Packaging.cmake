# "cpack" in the build folder makes a Debian package of what "cmake --install" installs.

include(GNUInstallDirs)

install(
    FILES
        docs/conventions.md
        docs/findings.md
        docs/import.md
        docs/json-schema.md
        docs/limits.md
        docs/model-files.md
        docs/packet-forms.md
        docs/vxb-format.md
    DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR})

# Debian's tools want manual pages and changes compressed, and a list of the package's own changes.
set(CPACK_PACKAGE_CONTACT "The ${PROJECT_NAME} developers <${PROJECT_NAME}@mqf2vxb.example.net>")
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(package_files ${CMAKE_CURRENT_BINARY_DIR}/package)
file(CONFIGURE OUTPUT ${package_files}/changelog.Debian @ONLY CONTENT
"@PROJECT_NAME@ (@PROJECT_VERSION@-@CPACK_DEBIAN_PACKAGE_RELEASE@) unstable; urgency=medium

  * Built from the sources of the project, whose changes changelog.gz tells.

 -- @CPACK_PACKAGE_CONTACT@  Sun, 01 Nov 2026 00:00:00 +0000
")
find_program(GZIP gzip)

# install_compressed(FILE FOLDER NAME): installs the file as NAME.gz, where there is gzip.
function(install_compressed file folder name)
    if(NOT GZIP)
        install(FILES ${file} DESTINATION ${folder} RENAME ${name})
        return()
    endif()
    set(compressed ${package_files}/${name}.gz)
    add_custom_command(OUTPUT ${compressed}
        COMMAND ${GZIP} -9nc ${file} > ${compressed}
        DEPENDS ${file}
        VERBATIM)
    add_custom_target(compressed_${name} ALL DEPENDS ${compressed})
    install(FILES ${compressed} DESTINATION ${folder})
endfunction()
install_compressed(${PROJECT_SOURCE_DIR}/docs/man/mqf2vxb.1 ${CMAKE_INSTALL_MANDIR}/man1 mqf2vxb.1)
if(MQF2VXB_BUILD_TOOLS)
    install_compressed(
        ${PROJECT_SOURCE_DIR}/docs/man/vxbtool.1 ${CMAKE_INSTALL_MANDIR}/man1 vxbtool.1)
endif()
install_compressed(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${CMAKE_INSTALL_DOCDIR} changelog)
install_compressed(
    ${package_files}/changelog.Debian ${CMAKE_INSTALL_DOCDIR} changelog.Debian)

set(CPACK_GENERATOR DEB)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "converter of 3-D model text files into one binary file
mqf2vxb converts one 3-D model, described by a handful of text files and
images, into one binary file that a program loads as it is.
.
vxbtool is for build systems and for people: it converts with a status and
depfiles, and checks, lints, shows and dumps models and their files.")
# The libraries that the programs are linked with, as packages.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# "vxbtool render" looks for its driver at run time.
if(MQF2VXB_BUILD_RENDER)
    set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "libegl1, libgl1-mesa-dri")
endif()

include(CPack)
