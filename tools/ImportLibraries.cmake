# What the commands that take in models and pictures are built with. Sets MQF2VXB_BUILD_IMPORT_NOW when
# all of it is there and wanted; the target vxbtool_pictures brings what pictures need, vxbtool_models
# what models need. Some of the packages have no CMake package, or one that asks for more than they
# need, so all are looked for by their files.

set(MQF2VXB_BUILD_IMPORT_NOW OFF)
if(MQF2VXB_BUILD_IMPORT)
    find_path(STB_INCLUDE_DIR stb_image.h PATH_SUFFIXES stb)
    find_path(IMAGEQUANT_INCLUDE_DIR libimagequant.h)
    find_library(IMAGEQUANT_LIBRARY imagequant)
    find_path(ASSIMP_INCLUDE_DIR assimp/Importer.hpp)
    find_library(ASSIMP_LIBRARY assimp)
    find_path(MESHOPTIMIZER_INCLUDE_DIR meshoptimizer.h)
    find_library(MESHOPTIMIZER_LIBRARY meshoptimizer)
    set(libraries STB_INCLUDE_DIR IMAGEQUANT_INCLUDE_DIR IMAGEQUANT_LIBRARY ASSIMP_INCLUDE_DIR
        ASSIMP_LIBRARY MESHOPTIMIZER_INCLUDE_DIR MESHOPTIMIZER_LIBRARY)
    mark_as_advanced(${libraries})
    set(missing)
    foreach(library IN LISTS libraries)
        if(NOT ${library})
            list(APPEND missing ${library})
        endif()
    endforeach()
    if(NOT missing)
        set(MQF2VXB_BUILD_IMPORT_NOW ON)
        add_library(vxbtool_pictures INTERFACE)
        target_include_directories(vxbtool_pictures SYSTEM INTERFACE
            ${STB_INCLUDE_DIR} ${IMAGEQUANT_INCLUDE_DIR})
        target_link_libraries(vxbtool_pictures INTERFACE ${IMAGEQUANT_LIBRARY})
        add_library(vxbtool_models INTERFACE)
        target_include_directories(vxbtool_models SYSTEM INTERFACE
            ${ASSIMP_INCLUDE_DIR} ${MESHOPTIMIZER_INCLUDE_DIR})
        target_link_libraries(vxbtool_models INTERFACE ${ASSIMP_LIBRARY} ${MESHOPTIMIZER_LIBRARY})
    elseif(MQF2VXB_BUILD_IMPORT STREQUAL AUTO)
        message(STATUS "vxbtool without import and image: not found: ${missing}")
    else()
        message(FATAL_ERROR "MQF2VXB_BUILD_IMPORT: not found: ${missing}")
    endif()
endif()
