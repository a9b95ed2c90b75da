# The top of the dispatch must define no kernel: every level with UNIT_LEVEL or fewer values
# left to convert, and every stage and kernel below, belongs to the kernel units. Should the top
# call a unit with another signature than the one declared, it compiles that subtree itself;
# this reads its object's symbol table and names what it finds. It must also call the units:
# the unit entries must appear as undefined references.
#
# cmake -DNM=<nm> -DOBJECT=<object of scalar_process.cpp> -DUNIT_LEVEL=<n> -DUNITS=<count>
#       -P check_dispatch_top.cmake
execute_process(COMMAND "${NM}" --demangle --format=posix "${OBJECT}"
    OUTPUT_VARIABLE table RESULT_VARIABLE status ERROR_VARIABLE errors)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "${NM} failed on ${OBJECT}: ${errors}")
endif()

math(EXPR highest_unit_level "${UNIT_LEVEL}")
set(unit_levels "")
foreach(level RANGE 0 ${highest_unit_level})
    list(APPEND unit_levels "${level}")
endforeach()
list(JOIN unit_levels "|" unit_levels)
set(kernel_pattern "(scalar_process_impl<|compute_block_sums<|finish_block<|Scalar_process_callback::call<|var_to_template<Scalar_process_callback, (${unit_levels})u,)")

string(REPLACE "\n" ";" lines "${table}")
set(defined_kernels "")
set(unit_calls 0)
foreach(line IN LISTS lines)
    # "<name> <type> [<value> [<size>]]"; a demangled name holds blanks of its own.
    if(NOT line MATCHES "^(.+) ([A-Za-z])( +[0-9a-fA-F]+)* *$")
        continue()
    endif()
    set(name "${CMAKE_MATCH_1}")
    set(type "${CMAKE_MATCH_2}")
    if(NOT name MATCHES "${kernel_pattern}")
        continue()
    endif()
    if(type STREQUAL "U")
        math(EXPR unit_calls "${unit_calls} + 1")
    else()
        list(APPEND defined_kernels "${name}")
    endif()
endforeach()

list(LENGTH defined_kernels defined_count)
if(defined_count GREATER 0)
    list(SUBLIST defined_kernels 0 5 examples)
    list(JOIN examples "\n  " examples)
    message(FATAL_ERROR "${OBJECT} defines ${defined_count} symbols of the kernel family, for "
        "example:\n  ${examples}\nThe top of the dispatch no longer calls the unit entries that "
        "kernel_family_units.hpp declares (see color_processing/scalar_engine/README.md).")
endif()
if(NOT unit_calls EQUAL UNITS)
    message(FATAL_ERROR "${OBJECT} calls ${unit_calls} kernel unit entries; expected ${UNITS}.")
endif()
message(STATUS "the top of the dispatch defines no kernel and calls all ${UNITS} kernel units")
