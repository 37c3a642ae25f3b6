# vxb_add_models(TARGET MODEL...
#                [OUTPUT_DIRECTORY DIR] [BASE DIR] [SCALE F]
#                [NO_IMAGES] [LINT] [WERROR] [PAGES] [EXCLUDE_FROM_ALL])
#
# Adds a target that converts each model (.mqf) into a VXB file, and converts it again when the
# model, one of the files that it names, or vxbtool itself is newer than the VXB file.
#
# OUTPUT_DIRECTORY  folder of the VXB files; the current binary directory unless given
# BASE              folder from which relative names in the models are opened; each model's own
#                   folder unless given
# SCALE, NO_IMAGES, LINT, WERROR  as the options of "vxbtool convert"
# PAGES             a page beside each VXB file shows it in a browser (vxbtool view)
# EXCLUDE_FROM_ALL  the target is not built by default
#
# Relative model names and BASE are of the current source directory, a relative OUTPUT_DIRECTORY is
# of the current binary directory. The target property VXB_FILES lists the VXB files, VXB_PAGES
# the pages.
#
# The Makefile generators of CMake never forget an input: a file that a model names no longer still
# leads to a conversion when it changes, and to one in each build when it is deleted.

function(vxb_add_models target)
    cmake_parse_arguments(PARSE_ARGV 1 arg
        "NO_IMAGES;LINT;WERROR;PAGES;EXCLUDE_FROM_ALL" "OUTPUT_DIRECTORY;BASE;SCALE" "")
    set(models ${arg_UNPARSED_ARGUMENTS})
    if(NOT models)
        message(FATAL_ERROR "vxb_add_models(${target}): no model given")
    endif()
    if(arg_KEYWORDS_MISSING_VALUES)
        message(FATAL_ERROR
            "vxb_add_models(${target}): no value given for ${arg_KEYWORDS_MISSING_VALUES}")
    endif()

    set(folder "${CMAKE_CURRENT_BINARY_DIR}")
    if(DEFINED arg_OUTPUT_DIRECTORY)
        cmake_path(ABSOLUTE_PATH arg_OUTPUT_DIRECTORY
            BASE_DIRECTORY "${folder}" OUTPUT_VARIABLE folder)
    endif()
    set(options)
    if(DEFINED arg_SCALE)
        list(APPEND options --scale "${arg_SCALE}")
    endif()
    if(arg_NO_IMAGES)
        list(APPEND options --no-images)
    endif()
    if(arg_LINT)
        list(APPEND options --lint)
    endif()
    if(arg_WERROR)
        list(APPEND options --werror)
    endif()
    set(all ALL)
    if(arg_EXCLUDE_FROM_ALL)
        set(all)
    endif()

    set(outputs)
    set(pages)
    foreach(model IN LISTS models)
        if(model MATCHES "^[A-Z_]+$")
            message(FATAL_ERROR "vxb_add_models(${target}): unknown word ${model}")
        endif()
        cmake_path(ABSOLUTE_PATH model NORMALIZE)
        get_source_file_property(generated "${model}" GENERATED)
        if(NOT EXISTS "${model}" AND NOT generated)
            message(FATAL_ERROR "vxb_add_models(${target}): there is no model ${model}")
        endif()
        if(DEFINED arg_BASE)
            cmake_path(ABSOLUTE_PATH arg_BASE NORMALIZE OUTPUT_VARIABLE base)
        else()
            cmake_path(GET model PARENT_PATH base)
        endif()
        cmake_path(GET model FILENAME name)
        cmake_path(REPLACE_EXTENSION name LAST_ONLY ".vxb")
        set(output "${folder}/${name}")
        if(output IN_LIST outputs)
            message(FATAL_ERROR "vxb_add_models(${target}): two models would become ${output}")
        endif()
        list(APPEND outputs "${output}")

        if(NOT IS_DIRECTORY "${base}")
            message(FATAL_ERROR "vxb_add_models(${target}): BASE ${base} is no folder")
        endif()

        add_custom_command(OUTPUT "${output}"
            COMMAND "${CMAKE_COMMAND}" -E make_directory "${folder}"
            COMMAND mqf2vxb::vxbtool convert ${options}
                --base "${base}" --depfile "${output}.d" -o "${output}" "${model}"
            DEPENDS "${model}" mqf2vxb::vxbtool
            DEPFILE "${output}.d"
            COMMENT "Converting ${name}"
            VERBATIM)
        if(arg_PAGES)
            cmake_path(REPLACE_EXTENSION output LAST_ONLY ".html" OUTPUT_VARIABLE page)
            list(APPEND pages "${page}")
            add_custom_command(OUTPUT "${page}"
                COMMAND mqf2vxb::vxbtool view -o "${page}" "${output}"
                DEPENDS "${output}" mqf2vxb::vxbtool
                COMMENT "Making the page of ${name}"
                VERBATIM)
        endif()
    endforeach()
    add_custom_target(${target} ${all} DEPENDS ${outputs} ${pages})
    set_property(TARGET ${target} PROPERTY VXB_FILES ${outputs})
    set_property(TARGET ${target} PROPERTY VXB_PAGES ${pages})
endfunction()
