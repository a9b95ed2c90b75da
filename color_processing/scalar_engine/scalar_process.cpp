// The top of the dispatch: the first seven decisions. The levels below belong to the kernel
// units, declared here from the generated list; this unit compiles in a moment and never has to
// be rebuilt with the kernels.
#define NQ_DISPATCH_TOP

#include "scalar_process.hpp"

#include "kernel_family_units.hpp"
#include "x87_arithmetic_scope.hpp"

#define NQ_KERNEL_UNIT NQ_DECLARE_KERNEL_UNIT
#include "kernel_family_units.inc"
#undef NQ_KERNEL_UNIT

template <typename T>
void scalar_process(const Transform_arguments<T>& arguments, int start)
{
    // Once per call, around every kernel: sums with 64-bit significands rounded to nearest,
    // whatever the caller's control word, which is given back afterwards.
    const X87_arithmetic_scope arithmetic;
    // The shifter states are computed temporaries and travel down the levels as rvalues; the
    // record, its fourth-channel flag and its output format travel by reference.
    var_to_template<Scalar_process_callback, 12u, std::tuple<>>::impl<void>(
        arguments.input_buffer_format, arguments.blue_input_LUT_enabled,
        arguments.green_input_LUT_enabled, arguments.red_input_LUT_enabled,
        arguments.blue_output_LUT_enabled, arguments.green_output_LUT_enabled,
        arguments.red_output_LUT_enabled, get_shifter_state(arguments.blue_shift_distance),
        get_shifter_state(arguments.green_shift_distance),
        get_shifter_state(arguments.red_shift_distance), arguments.fourth_channel_enabled,
        arguments.output_buffer_format, arguments, start);
}

template void scalar_process<unsigned short>(const Transform_arguments<unsigned short>&, int);
template void scalar_process<unsigned char>(const Transform_arguments<unsigned char>&, int);
