cmake_minimum_required(VERSION 3.20)

include("${CMAKE_CURRENT_LIST_DIR}/mqf2vxbTargets.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/VxbAddModels.cmake")
