# Installs the project, and builds beside it a small project that uses the installed package: its
# models are converted, and converted again exactly when one of their inputs changes.
# Needs BUILD (the project's build folder), EXAMPLES (the sample models), GENERATOR, and PAGES (whether
# vxbtool can make pages).

string(REPLACE " " "_" folder "${BUILD}/tests/cmake_package/${GENERATOR}")
set(source "${folder}/source")
set(output "${folder}/build/out")

function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
endfunction()

function(build)
    run(${CMAKE_COMMAND} --build "${folder}/build")
endfunction()

# Builds, and compares which of the two models were converted with CRAWLER and STRIPS.
function(expect_converted crawler strips)
    foreach(model IN ITEMS crawler crawler_strips)
        file(TIMESTAMP "${output}/${model}.vxb" ${model}_before "%s%f")
    endforeach()
    build()
    foreach(model IN ITEMS crawler crawler_strips)
        file(TIMESTAMP "${output}/${model}.vxb" after "%s%f")
        set(${model}_converted YES)
        if(after STREQUAL ${model}_before)
            set(${model}_converted NO)
        endif()
    endforeach()
    if(NOT "${crawler_converted} ${crawler_strips_converted}" STREQUAL "${crawler} ${strips}")
        message(FATAL_ERROR "converted: crawler ${crawler_converted}, "
            "crawler_strips ${crawler_strips_converted}; wanted: ${crawler}, ${strips}")
    endif()
endfunction()

file(REMOVE_RECURSE "${folder}")
run(${CMAKE_COMMAND} --install "${BUILD}" --prefix "${folder}/installed")
file(COPY "${CMAKE_CURRENT_LIST_DIR}/CMakeLists.txt" DESTINATION "${source}")
file(COPY "${EXAMPLES}/" DESTINATION "${source}/the art")
run(${CMAKE_COMMAND} -G ${GENERATOR} -S "${source}" -B "${folder}/build"
    "-DCMAKE_PREFIX_PATH=${folder}/installed" "-DWITH_PAGES=${PAGES}")

build()
expect_converted(NO NO)
file(TOUCH "${source}/the art/plate.pxl")
expect_converted(YES YES)
file(TOUCH "${source}/the art/crawler_strips.bnd")
expect_converted(NO YES)

# A page follows its VXB file.
if(PAGES)
    foreach(model IN ITEMS crawler crawler_strips)
        file(READ "${output}/${model}.html" page LIMIT 15)
        if(NOT page MATCHES "^<!doctype html>" OR
                "${output}/${model}.vxb" IS_NEWER_THAN "${output}/${model}.html")
            message(FATAL_ERROR "${model}.html was not made after its VXB file")
        endif()
    endforeach()
endif()

# The model names another file, which counts from then on, and then the old one again.
file(READ "${source}/the art/crawler.mqf" model)
string(REPLACE "wave" "wave2" changed_model "${model}")
file(WRITE "${source}/the art/crawler.mqf" "${changed_model}")
file(COPY_FILE "${source}/the art/crawler_wave.clp" "${source}/the art/crawler_wave2.clp")
expect_converted(YES NO)
file(TOUCH "${source}/the art/crawler_wave2.clp")
expect_converted(YES NO)
file(WRITE "${source}/the art/crawler.mqf" "${model}")
expect_converted(YES NO)
expect_converted(NO NO)

# A model that fails stops the build and leaves its VXB file as it was.
file(SHA256 "${output}/crawler.vxb" before)
file(APPEND "${source}/the art/crawler.mqf" "\nGEO=none.geo\n")
execute_process(COMMAND ${CMAKE_COMMAND} --build "${folder}/build"
    RESULT_VARIABLE status ERROR_VARIABLE errors OUTPUT_VARIABLE errors)
file(SHA256 "${output}/crawler.vxb" after)
if(status EQUAL 0 OR NOT errors MATCHES "none.geo: the file cannot be read: No such file" OR
        NOT before STREQUAL after)
    message(FATAL_ERROR "the build ended with ${status}: ${errors}")
endif()

# What is wrong in the call is seen before anything is built.
function(expect_refused why)
    file(WRITE "${folder}/refused/CMakeLists.txt" "cmake_minimum_required(VERSION 3.20)
project(refused LANGUAGES NONE)
find_package(mqf2vxb REQUIRED)
vxb_add_models(models ${ARGN})
")
    execute_process(COMMAND ${CMAKE_COMMAND} -G ${GENERATOR} -S "${folder}/refused"
            -B "${folder}/refused/build" "-DCMAKE_PREFIX_PATH=${folder}/installed"
        RESULT_VARIABLE status ERROR_VARIABLE errors OUTPUT_QUIET)
    string(REGEX REPLACE "[ \n]+" " " errors "${errors}")  # CMake breaks the lines
    if(status EQUAL 0 OR NOT errors MATCHES "${why}")
        message(FATAL_ERROR "wanted: ${why}; ended with ${status}: ${errors}")
    endif()
endfunction()
file(WRITE "${folder}/refused/m.mqf" "@MQF970401\n")
expect_refused("unknown word WEROR" m.mqf WEROR)
expect_refused("there is no model" gone.mqf)
expect_refused("is no folder" m.mqf BASE gone)
