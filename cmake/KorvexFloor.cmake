include(GoogleTest OPTIONAL)

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

include(KorvexHeaders)

# korvex_floor(NAME [SOURCES …] [USES lower floors, rooms and libraries …] [HEADERS precompiled ones])
# One folder, one library `korvex_<name>`: a floor, or one room of it, `korvex_<floor>_<room>`. Without
# sources it is all rooms of a floor together. What a floor uses, whoever uses the floor may use too, so a
# target names only what stands directly under it.
function(korvex_floor name)
    cmake_parse_arguments(FLOOR "" "HEADERS" "SOURCES;USES" ${ARGN})
    if(NOT FLOOR_HEADERS)
        set(FLOOR_HEADERS korvex_headers)
    endif()
    if(FLOOR_SOURCES)
        add_library(korvex_${name} STATIC ${FLOOR_SOURCES})
        target_precompile_headers(korvex_${name} REUSE_FROM ${FLOOR_HEADERS})
        target_link_libraries(korvex_${name} PUBLIC korvex_options ${FLOOR_USES})
    else()
        add_library(korvex_${name} INTERFACE)
        target_link_libraries(korvex_${name} INTERFACE korvex_options ${FLOOR_USES})
    endif()
endfunction()

# korvex_moc(TARGET): Qt's moc reads the sources of the target.
function(korvex_moc target)
    # Qt 6.4's moc fails on the concepts behind <compare>: it is told that it has seen that header.
    set_target_properties(${target} PROPERTIES AUTOMOC ON AUTOMOC_MOC_OPTIONS -D_COMPARE)
endfunction()

# korvex_qt_floor: a floor or room whose sources, if it has any, Qt's moc reads.
function(korvex_qt_floor name)
    korvex_floor(${name} HEADERS korvex_qt_headers ${ARGN})
    get_target_property(kind korvex_${name} TYPE)
    set(scope PUBLIC)
    if(kind STREQUAL INTERFACE_LIBRARY)
        set(scope INTERFACE)
    else()
        korvex_moc(korvex_${name})
    endif()
    # `emit` is the name of base::Signal's own function.
    target_compile_definitions(korvex_${name} ${scope} QT_NO_KEYWORDS)
endfunction()

# korvex_test(NAME SOURCES … USES … [ENVIRONMENT NAME=VALUE] [HEADERS precompiled ones]): a GoogleTest
# program whose cases CTest lists one by one.
function(korvex_test name)
    cmake_parse_arguments(TEST "" "ENVIRONMENT;HEADERS" "SOURCES;USES" ${ARGN})
    if(NOT TEST_HEADERS)
        set(TEST_HEADERS korvex_test_headers)
    endif()
    add_executable(${name} ${TEST_SOURCES})
    target_link_libraries(${name} PRIVATE korvex_options ${TEST_USES} GTest::gmock GTest::gtest_main)
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
    target_precompile_headers(${name} REUSE_FROM ${TEST_HEADERS})
    set(properties TIMEOUT 120)
    if(TEST_ENVIRONMENT)
        list(APPEND properties ENVIRONMENT ${TEST_ENVIRONMENT})
    endif()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
endfunction()
