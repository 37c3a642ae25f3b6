# What "vxbtool import" and "vxbtool image" stand on. Some of these packages have no CMake package,
# or one that asks for more than they need, so all are looked for by their files.
find_path(MQF2VXB_ASSIMP_INCLUDE assimp/Importer.hpp)
find_library(MQF2VXB_ASSIMP_LIBRARY assimp)
find_path(MQF2VXB_STB_INCLUDE stb/stb_image.h)
find_library(MQF2VXB_STB_LIBRARY stb)
find_path(MQF2VXB_JPEG_INCLUDE jpeglib.h)
find_library(MQF2VXB_JPEG_LIBRARY jpeg)
find_path(MQF2VXB_IMAGEQUANT_INCLUDE libimagequant.h)
find_library(MQF2VXB_IMAGEQUANT_LIBRARY imagequant)
find_path(MQF2VXB_MESHOPTIMIZER_INCLUDE meshoptimizer.h)
find_library(MQF2VXB_MESHOPTIMIZER_LIBRARY meshoptimizer)

add_library(mqf2vxb_import_libraries INTERFACE)
set(import_found ON)
foreach(package IN ITEMS ASSIMP STB JPEG IMAGEQUANT MESHOPTIMIZER)
    mark_as_advanced(MQF2VXB_${package}_INCLUDE MQF2VXB_${package}_LIBRARY)
    if(MQF2VXB_${package}_INCLUDE AND MQF2VXB_${package}_LIBRARY)
        target_include_directories(mqf2vxb_import_libraries
            SYSTEM INTERFACE ${MQF2VXB_${package}_INCLUDE})
        target_link_libraries(mqf2vxb_import_libraries INTERFACE ${MQF2VXB_${package}_LIBRARY})
    else()
        message(STATUS "vxbtool import and image need ${package}, which is not installed")
        set(import_found OFF)
    endif()
endforeach()

option(MQF2VXB_BUILD_IMPORT "Build the import of models and pictures" ${import_found})
if(MQF2VXB_BUILD_IMPORT AND NOT import_found)
    message(FATAL_ERROR "MQF2VXB_BUILD_IMPORT needs packages that are missing (see above)")
endif()

if(MQF2VXB_BUILD_IMPORT)
    set(import_sources
        vxbtool/image/image.cpp
        vxbtool/import/angles.cpp
        vxbtool/import/animations.cpp
        vxbtool/import/channel.cpp
        vxbtool/import/faces.cpp
        vxbtool/import/geometry.cpp
        vxbtool/import/gltf_document.cpp
        vxbtool/import/gltf_materials.cpp
        vxbtool/import/gltf_nodes.cpp
        vxbtool/import/guarded.cpp
        vxbtool/import/import.cpp
        vxbtool/import/import_model.cpp
        vxbtool/import/linear_keys.cpp
        vxbtool/import/looks.cpp
        vxbtool/import/materials.cpp
        vxbtool/import/model_builder.cpp
        vxbtool/import/motions.cpp
        vxbtool/import/nodes.cpp
        vxbtool/import/picture_source.cpp
        vxbtool/import/plain_gltf.cpp
        vxbtool/import/point_table.cpp
        vxbtool/import/progress_line.cpp
        vxbtool/import/report.cpp
        vxbtool/import/round_polygons.cpp
        vxbtool/import/sampler.cpp
        vxbtool/import/seams.cpp
        vxbtool/import/simplifying.cpp
        vxbtool/import/skins.cpp
        vxbtool/import/smoothing.cpp
        vxbtool/import/source.cpp
        vxbtool/import/strips.cpp
        vxbtool/import/texture_coordinates.cpp
        vxbtool/import/textures.cpp
        vxbtool/import/track.cpp
        vxbtool/import/unescaped.cpp
        vxbtool/pictures/gif_frame.cpp
        vxbtool/pictures/jpeg.cpp
        vxbtool/pictures/memory_map.cpp
        vxbtool/pictures/options.cpp
        vxbtool/pictures/palette.cpp
        vxbtool/pictures/picture.cpp
        vxbtool/pictures/picture_size.cpp
        vxbtool/pictures/placing.cpp
        vxbtool/pictures/pnm.cpp
        vxbtool/pictures/texture_block.cpp)
    # stb copies no bytes from or to nowhere when a picture has an empty part, which no machine minds; and
    # colours that a damaged file names beyond its table are the same in each run.
    set_source_files_properties(vxbtool/pictures/picture.cpp PROPERTIES
        COMPILE_OPTIONS "-fno-sanitize=nonnull-attribute;-ftrivial-auto-var-init=pattern;-Wno-uninitialized"
        SKIP_UNITY_BUILD_INCLUSION ON)
else()
    set(import_sources vxbtool/import_missing.cpp)
endif()
