# The icons and the code highlighter come from npm packages that package-lock.json pins. They are
# installed when the lock file is newer than what is there, and compiled in.
set(KORVEX_NODE_MODULES ${CMAKE_SOURCE_DIR}/node_modules)
# Several build folders may be configured at the same time.
file(LOCK ${CMAKE_SOURCE_DIR}/build/npm.lock GUARD FILE)
if(NOT EXISTS ${KORVEX_NODE_MODULES}/.package-lock.json
   OR ${CMAKE_SOURCE_DIR}/package-lock.json IS_NEWER_THAN ${KORVEX_NODE_MODULES}/.package-lock.json)
    find_program(NPM_PROGRAM npm REQUIRED)
    execute_process(COMMAND ${NPM_PROGRAM} ci --ignore-scripts --no-audit --no-fund --loglevel=error
                    WORKING_DIRECTORY ${CMAKE_SOURCE_DIR} COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
endif()
file(LOCK ${CMAKE_SOURCE_DIR}/build/npm.lock RELEASE)
set_property(DIRECTORY ${CMAKE_SOURCE_DIR} APPEND PROPERTY
             CMAKE_CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/package-lock.json)
