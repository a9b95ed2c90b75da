# Choosing the companion libraries a test process sees. The core opens its companions by bare
# file name and has no run-time search path, so a test's LD_LIBRARY_PATH, made here of test
# double folders only, decides exactly which companions exist for it.
set(NQ_DOUBLES_DIR "${PROJECT_BINARY_DIR}/tests/doubles")

# The search path made of the named double folders (see tests/doubles/CMakeLists.txt), led by
# an empty folder so that the path is never empty.
function(nq_companion_path result)
    set(folders "${NQ_DOUBLES_DIR}/none")
    foreach(variant IN LISTS ARGN)
        list(APPEND folders "${NQ_DOUBLES_DIR}/${variant}")
    endforeach()
    list(JOIN folders ":" path)
    set(${result} "${path}" PARENT_SCOPE)
endfunction()

# Registers the GoogleTest cases of `target` that match FILTER as ctest tests named
# <SET>.<suite>.<case>, each run in its own process with only the COMPANIONS doubles visible.
function(nq_discover_tests_with_companions target)
    cmake_parse_arguments(ARG "" "SET;FILTER" "COMPANIONS" ${ARGN})
    nq_companion_path(path ${ARG_COMPANIONS})
    gtest_discover_tests(${target}
        TEST_PREFIX "${ARG_SET}."
        TEST_FILTER "${ARG_FILTER}"
        DISCOVERY_TIMEOUT 60
        PROPERTIES ENVIRONMENT "LD_LIBRARY_PATH=${path}" LABELS "${ARG_SET}")
    add_dependencies(${target} nq_companion_doubles)
endfunction()

# Registers a plain program run as one ctest test with only the COMPANIONS doubles visible.
function(nq_add_test_with_companions name)
    cmake_parse_arguments(ARG "" "" "COMMAND;COMPANIONS" ${ARGN})
    nq_companion_path(path ${ARG_COMPANIONS})
    add_test(NAME ${name} COMMAND ${ARG_COMMAND})
    set_tests_properties(${name} PROPERTIES ENVIRONMENT "LD_LIBRARY_PATH=${path}")
endfunction()
