// Turns the twelve run-time choices of a record into the template arguments of one kernel,
// one decision per value, so that the pixel loop itself tests nothing.
//
// var_to_template<Callback, N, tuple<constants...>>::impl converts its first argument into a
// std::integral_constant, appends it to the tuple and forwards the rest one level down; at
// N == 0 the callback receives the constants as template arguments. The members are defined
// outside the class so that `extern template` declarations of one level are honoured: the top
// of the dispatch is compiled in one unit and each subtree below the seventh decision in its
// own (see kernel_family_units.hpp and README.md).
#pragma once

#include "pixel_kernel.hpp"
#include "transform_arguments.hpp"

#include <cstdint>
#include <tuple>
#include <type_traits>
#include <utility>

// The level a kernel unit owns: the top of the dispatch converts the first seven values, a unit
// the remaining five.
constexpr unsigned kernel_unit_level = 5;

// The top of the dispatch defines NQ_DISPATCH_TOP. It declares the unit levels `extern template`
// and must never compile one: should its call stop matching the declared entries, the level it
// calls would be a different function, and the compiler would build the whole family into the
// top. There that is a compile error instead.
#ifdef NQ_DISPATCH_TOP
constexpr bool unit_levels_compiled_here = false;
#else
constexpr bool unit_levels_compiled_here = true;
#endif

constexpr SINGLE_CHANNEL_SHIFTER_STATE get_shifter_state(int32_t distance)
{
    if (distance > 0) return SINGLE_CHANNEL_SHIFTER_STATE_LEFT_SHIFT;
    if (distance < 0) return SINGLE_CHANNEL_SHIFTER_STATE_RIGHT_SHIFT;
    return SINGLE_CHANNEL_SHIFTER_STATE_NO_SHIFT;
}

// Receives the twelve constants, in the kernel's parameter order, as template arguments.
struct Scalar_process_callback {
    template <typename InputFormat, typename BlueInputLUT, typename GreenInputLUT, typename RedInputLUT,
              typename BlueOutputLUT, typename GreenOutputLUT, typename RedOutputLUT,
              typename BlueShifter, typename GreenShifter, typename RedShifter, typename FourthChannel,
              typename OutputFormat, typename T>
    static void call(const Transform_arguments<T>& arguments, int& start);
};

template <typename Callback, unsigned COUNT, typename Constants>
struct var_to_template {
    template <typename R, typename... Rest>
    static R impl(bool value, Rest&&... rest);
    template <typename R, typename... Rest>
    static R impl(NQ_COLOR_FORMAT value, Rest&&... rest);
    template <typename R, typename... Rest>
    static R impl(SINGLE_CHANNEL_SHIFTER_STATE value, Rest&&... rest);

private:
    template <typename Constant>
    using next_level = var_to_template<
        Callback, COUNT - 1,
        decltype(std::tuple_cat(std::declval<Constants>(), std::declval<std::tuple<Constant>>()))>;

    // Only the values 1 and 2 have kernels of their own; every other value is taken as 0.
    template <typename Enumeration, typename R, typename... Rest>
    static R impl_three_way(Enumeration value, Rest&&... rest);

    // False only for a kernel unit's level in the top of the dispatch, which must not compile
    // it (see unit_levels_compiled_here).
    static constexpr bool compiled_here = COUNT > kernel_unit_level || unit_levels_compiled_here;
};

template <typename Callback, typename... Constants>
struct var_to_template<Callback, 0, std::tuple<Constants...>> {
    template <typename R, typename... Rest>
    static R impl(Rest&&... rest);
};

template <typename InputFormat, typename BlueInputLUT, typename GreenInputLUT, typename RedInputLUT,
          typename BlueOutputLUT, typename GreenOutputLUT, typename RedOutputLUT,
          typename BlueShifter, typename GreenShifter, typename RedShifter, typename FourthChannel,
          typename OutputFormat, typename T>
void Scalar_process_callback::call(const Transform_arguments<T>& arguments, int& start)
{
    scalar_process_impl<InputFormat::value, BlueInputLUT::value, GreenInputLUT::value,
                        RedInputLUT::value, BlueOutputLUT::value, GreenOutputLUT::value,
                        RedOutputLUT::value, BlueShifter::value, GreenShifter::value,
                        RedShifter::value, FourthChannel::value, OutputFormat::value, T>(arguments,
                                                                                         start);
}

template <typename Callback, unsigned COUNT, typename Constants>
template <typename R, typename... Rest>
R var_to_template<Callback, COUNT, Constants>::impl(bool value, Rest&&... rest)
{
    static_assert(compiled_here, "the top of the dispatch reaches a kernel unit's level that no "
                                 "unit declares: its call must match NQ_KERNEL_UNIT_ENTRY "
                                 "(scalar_engine/README.md)");
    if constexpr (compiled_here) {
        if (value) {
            return next_level<std::true_type>::template impl<R>(std::forward<Rest>(rest)...);
        }
        return next_level<std::false_type>::template impl<R>(std::forward<Rest>(rest)...);
    }
}

template <typename Callback, unsigned COUNT, typename Constants>
template <typename R, typename... Rest>
R var_to_template<Callback, COUNT, Constants>::impl(NQ_COLOR_FORMAT value, Rest&&... rest)
{
    return impl_three_way<NQ_COLOR_FORMAT, R>(value, std::forward<Rest>(rest)...);
}

template <typename Callback, unsigned COUNT, typename Constants>
template <typename R, typename... Rest>
R var_to_template<Callback, COUNT, Constants>::impl(SINGLE_CHANNEL_SHIFTER_STATE value, Rest&&... rest)
{
    return impl_three_way<SINGLE_CHANNEL_SHIFTER_STATE, R>(value, std::forward<Rest>(rest)...);
}

template <typename Callback, unsigned COUNT, typename Constants>
template <typename Enumeration, typename R, typename... Rest>
R var_to_template<Callback, COUNT, Constants>::impl_three_way(Enumeration value, Rest&&... rest)
{
    static_assert(compiled_here, "the top of the dispatch reaches a kernel unit's level that no "
                                 "unit declares: its call must match NQ_KERNEL_UNIT_ENTRY "
                                 "(scalar_engine/README.md)");
    if constexpr (compiled_here) {
        switch (value) {
        case 1:
            return next_level<std::integral_constant<Enumeration, Enumeration(1)>>::template impl<R>(
                std::forward<Rest>(rest)...);
        case 2:
            return next_level<std::integral_constant<Enumeration, Enumeration(2)>>::template impl<R>(
                std::forward<Rest>(rest)...);
        default:
            return next_level<std::integral_constant<Enumeration, Enumeration(0)>>::template impl<R>(
                std::forward<Rest>(rest)...);
        }
    }
}

template <typename Callback, typename... Constants>
template <typename R, typename... Rest>
R var_to_template<Callback, 0, std::tuple<Constants...>>::impl(Rest&&... rest)
{
    return Callback::template call<Constants...>(std::forward<Rest>(rest)...);
}
