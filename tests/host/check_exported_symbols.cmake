# Compares the dynamic symbol table of the built library with the interface it promises: the
# nineteen public calls, the three loader helpers, the global logger and the static members of
# the table-library binding; nothing else of the library's own.
#
# cmake -DNM=<nm> -DLIBRARY=<shared library> -P check_exported_symbols.cmake
set(expected
    "LUT_wrapper::m_LUT_module_handle"
    "LUT_wrapper::m_create_LUT"
    "LUT_wrapper::m_destroy_LUT"
    "LUT_wrapper::m_get_LUT_data"
    "LUT_wrapper::m_initialize_LUT_module"
    "LUT_wrapper::m_terminate_LUT_module"
    "LUT_wrapper::m_transform_LUT_16"
    get_function_handle
    load_shared_library
    logger
    nq_color_append_matrix
    nq_color_clear_matrix
    nq_color_create_color_processor
    nq_color_create_color_processor_test
    nq_color_destroy_color_processor
    nq_color_enable_input_LUTs
    nq_color_enable_output_LUTs
    nq_color_get_blue_input_LUT
    nq_color_get_blue_output_LUT
    nq_color_get_green_input_LUT
    nq_color_get_green_output_LUT
    nq_color_get_red_input_LUT
    nq_color_get_red_output_LUT
    nq_color_processing_module_initialize
    nq_color_processing_module_terminate
    nq_color_transform_48_to_24
    nq_color_transform_48_to_32
    nq_color_transform_48_to_48
    nq_color_transform_48_to_64
    unload_shared_library)

execute_process(COMMAND "${NM}" -D --defined-only --demangle --format=posix "${LIBRARY}"
    OUTPUT_VARIABLE table RESULT_VARIABLE status ERROR_VARIABLE errors)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "${NM} failed on ${LIBRARY}: ${errors}")
endif()

string(REPLACE "\n" ";" lines "${table}")
set(exported "")
foreach(line IN LISTS lines)
    # "<name> <type> <value> [<size>]"; a demangled name may itself hold blanks.
    if(line MATCHES "^(.+) [A-Za-z] [0-9a-fA-F]+( [0-9a-fA-F]+)?$")
        list(APPEND exported "${CMAKE_MATCH_1}")
    endif()
endforeach()
list(SORT exported)
list(REMOVE_DUPLICATES exported)
list(SORT expected)

set(unexpected ${exported})
list(REMOVE_ITEM unexpected ${expected})
set(missing ${expected})
list(REMOVE_ITEM missing ${exported})
if(unexpected OR missing)
    list(JOIN unexpected "\n  " unexpected_text)
    list(JOIN missing "\n  " missing_text)
    message(FATAL_ERROR "Dynamic symbol table of ${LIBRARY} differs from the interface.\n"
        "Exported but not promised:\n  ${unexpected_text}\nPromised but not exported:\n  ${missing_text}")
endif()
list(LENGTH exported count)
message(STATUS "${count} exported symbols, as promised")
