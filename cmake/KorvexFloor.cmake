include(GoogleTest OPTIONAL)

# No precompiled headers: they save half a second a file, but hide a missing include, and the compiler
# cache could not share objects between the presets.
add_library(korvex_options INTERFACE)
# A field that a designated initializer leaves out has its default: that is what they are for. And
# GCC 12 warns of overlaps in std::string's operator+ that are not there (its bug 105651).
target_compile_options(korvex_options INTERFACE
    -Wall -Wextra -Wshadow -Wconversion -Wnon-virtual-dtor
    -Wno-missing-field-initializers -Wno-restrict)
target_include_directories(korvex_options INTERFACE ${CMAKE_SOURCE_DIR}/src)
if(KORVEX_SANITIZE)
    target_compile_options(korvex_options INTERFACE -fsanitize=${KORVEX_SANITIZE}
        -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(korvex_options INTERFACE -fsanitize=${KORVEX_SANITIZE})
endif()
if(KORVEX_COVERAGE)
    target_compile_options(korvex_options INTERFACE --coverage -O0)
    target_link_options(korvex_options INTERFACE --coverage)
endif()

# korvex_floor(NAME [SOURCES …] [USES lower floors and libraries …])
# One folder, one library `korvex_<name>`. What a floor uses, whoever uses the floor may use too,
# so a target names only the floors directly under it.
function(korvex_floor name)
    cmake_parse_arguments(FLOOR "" "" "SOURCES;USES" ${ARGN})
    add_library(korvex_${name} STATIC ${FLOOR_SOURCES})
    target_link_libraries(korvex_${name} PUBLIC korvex_options ${FLOOR_USES})
endfunction()

# korvex_test(NAME SOURCES … USES … [ENVIRONMENT NAME=VALUE]): a GoogleTest program whose cases CTest
# lists one by one.
function(korvex_test name)
    cmake_parse_arguments(TEST "" "ENVIRONMENT" "SOURCES;USES" ${ARGN})
    add_executable(${name} ${TEST_SOURCES})
    target_link_libraries(${name} PRIVATE korvex_options ${TEST_USES} GTest::gmock GTest::gtest_main)
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
    set(properties TIMEOUT 120)
    if(TEST_ENVIRONMENT)
        list(APPEND properties ENVIRONMENT ${TEST_ENVIRONMENT})
    endif()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
endfunction()
