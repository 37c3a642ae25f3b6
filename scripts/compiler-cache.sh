# To be sourced by a script that builds the same files more than once, in more than one folder:
# warnings are errors in all of its builds, and what one of them compiled the others take from a cache.
scripts/install-packages.sh check
export MQF2VXB_WERROR=ON
export CMAKE_CXX_COMPILER_LAUNCHER=ccache
export CCACHE_DIR=$PWD/build/ccache CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
