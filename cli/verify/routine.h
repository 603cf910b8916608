// Public functions of any signature behind one form: their arguments are told by their types, and passed by address.
#pragma once

#include <orv/orv.h>

#include <array>
#include <complex>
#include <cstdint>
#include <span>
#include <type_traits>

namespace orv::verify {

// s d c z: a number, i: a whole number, l: a letter, o: an option
template <class T> constexpr char letter_of()
{
    if constexpr (std::is_pointer_v<T>) return letter_of<std::remove_cv_t<std::remove_pointer_t<T>>>();
    else if constexpr (std::is_enum_v<T>) return 'o';
    else if constexpr (std::is_same_v<T, float>) return 's';
    else if constexpr (std::is_same_v<T, double>) return 'd';
    else if constexpr (std::is_same_v<T, std::complex<float>>) return 'c';
    else if constexpr (std::is_same_v<T, std::complex<double>>) return 'z';
    else if constexpr (std::is_same_v<T, std::int64_t>) return 'i';
    else {
        static_assert(std::is_same_v<T, char>);
        return 'l';
    }
}

struct Routine {
    const char* type;                                // as problems name it: "d", "zd", "z_d_z_x"
    std::span<const char> kinds;                     // of the arguments
    char result;                                     // kind of what is returned: an orv_status is 0
    const char *module = nullptr, *kernel = nullptr; // if it is reached by name

    // Calls with arguments that stand at these addresses; a number that is returned goes to *result.
    orv_status (*call)(const Routine& self, void* const* arguments, void* result) = nullptr;
};

template <class A> A argument(void* at)
{
    if constexpr (std::is_pointer_v<A>) return static_cast<A>(at);
    else if constexpr (std::is_enum_v<A>) return static_cast<A>(*static_cast<int*>(at));
    else return *static_cast<A*>(at);
}

template <class Function> struct Form;
template <class R, class... Args> struct Form<R(Args...)> {
    static constexpr std::array<char, sizeof...(Args)> kinds{letter_of<Args>()...};
    static constexpr bool is_status = std::is_same_v<R, orv_status> || std::is_void_v<R>;
    static constexpr char result()
    {
        if constexpr (is_status) return 0;
        else return letter_of<R>();
    }
    static orv_status call(R (*function)(Args...), void* const* arguments, void* result)
    {
        return [&]<std::size_t... I>(std::index_sequence<I...>)->orv_status
        {
            if constexpr (std::is_void_v<R>) return function(argument<Args>(arguments[I])...), ORV_OK;
            else if constexpr (is_status) return function(argument<Args>(arguments[I])...);
            else return *static_cast<R*>(result) = function(argument<Args>(arguments[I])...), ORV_OK;
        }
        (std::index_sequence_for<Args...>{});
    }
};

template <auto function> constexpr Routine routine(const char* type)
{
    using F = Form<std::remove_pointer_t<decltype(function)>>;
    return {type,
            F::kinds,
            F::result(),
            nullptr,
            nullptr,
            [](const Routine&, void* const* arguments, void* result) { return F::call(function, arguments, result); }};
}

// A kernel that no public function stands before.
template <class Function> constexpr Routine kernel(const char* type, const char* module, const char* name)
{
    using F = Form<Function>;
    return {type,
            F::kinds,
            F::result(),
            module,
            name,
            [](const Routine& self, void* const* arguments, void* result) -> orv_status {
                void* const address = orv_kernel(self.module, self.kernel);
                if (address == nullptr) return ORV_NO_KERNEL;
                return F::call(reinterpret_cast<Function*>(address), arguments, result);
            }};
}

} // namespace orv::verify
