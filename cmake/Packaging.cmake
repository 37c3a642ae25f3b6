# "cpack" in the build folder makes a Debian package of what "cmake --install" installs.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The ${PROJECT_NAME} developers <${PROJECT_NAME}@localhost>")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
# The libraries that the programs are linked with, as packages.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

include(CPack)
