# System headers that are compiled once for many targets: they were half of what a source of the windows
# cost, and a third elsewhere. No header of ours is among them, so they are hardly ever made again. The
# presets `fuzz`, `asan` and `release` build without them, and so find a missing include.
#
# GCC forgets in them that the standard library switches warnings off for itself. With -O3 that brings up
# overflows in std::string's operator+ that are not there: the preset `run` switches them off, and
# `release` has all warnings.

# korvex_headers(NAME [HEADERS …] [USES …] [DEFINES …]): the standard library's and these. A target can
# take them when all their definitions are among its own, and its options are the same; the compiler
# warns where it cannot.
function(korvex_headers name)
    cmake_parse_arguments(HEADERS "" "" "HEADERS;USES;DEFINES" ${ARGN})
    file(CONFIGURE OUTPUT ${name}.cpp CONTENT "")
    add_library(${name} OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
    target_link_libraries(${name} PRIVATE korvex_options ${HEADERS_USES})
    target_compile_definitions(${name} PRIVATE ${HEADERS_DEFINES})
    target_precompile_headers(${name} PRIVATE
        <algorithm> <array> <cmath> <cstddef> <cstdint> <functional> <memory> <optional> <span> <string>
        <string_view> <unordered_map> <utility> <vector> ${HEADERS_HEADERS})
endfunction()

set(test_headers <filesystem> <gmock/gmock.h> <gtest/gtest.h>)
set(qt_headers
    <filesystem>
    <QApplication> <QBoxLayout> <QKeyEvent> <QLabel> <QListView> <QMenu> <QPainter> <QStyledItemDelegate>
    <QTextCursor> <QTextDocument> <QTextTable> <QTimer>)

korvex_headers(korvex_headers)
if(KORVEX_TESTS)
    korvex_headers(korvex_test_headers HEADERS ${test_headers} USES GTest::gmock)
endif()
if(KORVEX_WINDOWS)
    korvex_headers(korvex_qt_headers HEADERS ${qt_headers}
                   USES Qt6::Widgets DEFINES QT_NO_KEYWORDS)
endif()
