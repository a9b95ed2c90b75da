# Compares the dynamic symbol table of the built library with the interface it promises: the
# nineteen public calls, the three loader helpers, the global logger and the static members of
# the table-library binding; nothing else of the library's own.
#
# cmake -DNM=<nm> -DLIBRARY=<shared library> -P check_exported_symbols.cmake
set(expected get_function_handle load_shared_library unload_shared_library logger)
foreach(member LUT_module_handle create_LUT destroy_LUT get_LUT_data initialize_LUT_module
               terminate_LUT_module transform_LUT_16)
    list(APPEND expected "LUT_wrapper::m_${member}")
endforeach()
foreach(call append_matrix clear_matrix create_color_processor create_color_processor_test
             destroy_color_processor enable_input_LUTs enable_output_LUTs get_blue_input_LUT
             get_blue_output_LUT get_green_input_LUT get_green_output_LUT get_red_input_LUT
             get_red_output_LUT processing_module_initialize processing_module_terminate
             transform_48_to_24 transform_48_to_32 transform_48_to_48 transform_48_to_64)
    list(APPEND expected "nq_color_${call}")
endforeach()

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
list(REMOVE_DUPLICATES exported)

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
