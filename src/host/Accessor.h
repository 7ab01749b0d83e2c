#pragma once

#include <cstddef>
#include <tuple>
#include <type_traits>

namespace tracery::binding {

template <class R, class O, class... A>
struct Operation {
    using Result = std::remove_cvref_t<R>;
    using Object = std::remove_cvref_t<O>;
    using Arguments = std::tuple<std::remove_cvref_t<A>...>;
};

template <class CallOperator>
struct LambdaAccessor;
template <class R, class L, class O, class... A>
struct LambdaAccessor<R (L::*)(O&, A...) const> : Operation<R, O, A...> {};

/// What an operation of a library class takes and gives. Operations are members, or functions and lambdas without
/// captures whose first argument is the object.
template <class T>
struct Accessor : LambdaAccessor<decltype(&T::operator())> {};
template <class R, class O, class... A>
struct Accessor<R (O::*)(A...)> : Operation<R, O, A...> {};
template <class R, class O, class... A>
struct Accessor<R (O::*)(A...) const> : Operation<R, O, A...> {};
template <class R, class O, class... A>
struct Accessor<R (*)(O&, A...)> : Operation<R, O, A...> {};

} // namespace tracery::binding
