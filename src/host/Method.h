#pragma once

#include "host/Accessor.h"
#include "host/FixedText.h"
#include "host/Payload.h"
#include "host/Value.h"
#include "host/guarded.h"

#include <tracery/host/ClassInfo.h>

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <tuple>
#include <type_traits>
#include <utility>

namespace tracery::binding {

/// Names a result of a method.
template <FixedText text>
struct Output {
    static constexpr const char* name = text.text;
};

/// Results of an operation, one each.
template <class R>
struct Results {
    static constexpr std::size_t count = 1;
    static std::vector<hostobj::COSDataTypePtr> types() { return {dataTypeOf<Value<R>>()}; }
    static void append(R result, hostobj::HostOutputs& outputs)
    {
        outputs.push_back(Value<R>::write(std::move(result)));
    }
};
template <>
struct Results<void> {
    static constexpr std::size_t count = 0;
    static std::vector<hostobj::COSDataTypePtr> types() { return {}; }
};
template <class... R>
struct Results<std::tuple<R...>> {
    static constexpr std::size_t count = sizeof...(R);
    static std::vector<hostobj::COSDataTypePtr> types() { return {dataTypeOf<Value<R>>()...}; }
    static void append(std::tuple<R...> results, hostobj::HostOutputs& outputs)
    {
        std::apply([&](auto&... result) { (outputs.push_back(Value<R>::write(std::move(result))), ...); }, results);
    }
};

/// How many arguments a signature takes, the object included.
struct ArgumentCounts {
    std::size_t fewest;
    std::size_t most;
    bool include(std::size_t count) const noexcept { return fewest <= count && count <= most; }
};

/// Refuses a number of arguments that none of the signatures takes. throws  InvalidNumberOfArguments
void requireInputs(std::size_t inputs, std::span<const ArgumentCounts> taken);
/// Refuses a number of results. throws  InvalidNumberOfArguments
void requireOutputs(std::size_t wanted, std::size_t outputs);

/// A method under `methodName` that calls an operation: a member of the payload, or a function or lambda that takes the
/// payload first. Types, counts and conversions follow from the operation; arguments that are std::optional may be left
/// out, last ones first; results in a tuple are several.
template <FixedText methodName, auto operation, class... OutputNames>
class Method : public hostobj::COSMethodInfo {
protected:
    using Class = typename Accessor<decltype(operation)>::Object;
    using Arguments = typename Accessor<decltype(operation)>::Arguments;
    using Result = typename Accessor<decltype(operation)>::Result;
    static constexpr std::size_t kArguments = std::tuple_size_v<Arguments>;
    static constexpr std::size_t kOptional = []<class... A>(std::type_identity<std::tuple<A...>>) {
        return (std::size_t{0} + ... + (mayBeLeftOut<A> ? 1 : 0));
    }(std::type_identity<Arguments>());
    static_assert(Results<Result>::count == sizeof...(OutputNames), "each result has a name");
    static_assert(
        []<std::size_t... i>(std::index_sequence<i...>) {
            return ((mayBeLeftOut<std::tuple_element_t<i, Arguments>> == (i >= kArguments - kOptional)) && ...);
        }(std::make_index_sequence<kArguments>()),
        "only last arguments can be left out");

public:
    static constexpr ArgumentCounts kCounts{1 + kArguments - kOptional, 1 + kArguments};

    hostobj::COSNameID getName() const override { return methodName.text; }
    hostobj::COSMethodSignaturePtr getSignature() const override
    {
        static const hostobj::COSMethodSignaturePtr signature = makeSignature();
        return signature;
    }
    hostobj::HostOutputs invoke(hostobj::HostInputs inputs, std::size_t wanted) const override
    {
        return guarded([&] {
            const std::shared_ptr<Class> payload = payloadOf<Class>(inputs.empty() ? nullptr : inputs[0]);
            requireInputs(inputs.size(), {&kCounts, 1});
            requireOutputs(wanted, sizeof...(OutputNames));
            return call(*payload, inputs, std::make_index_sequence<kArguments>());
        });
    }

private:
    static hostobj::COSMethodSignaturePtr makeSignature()
    {
        std::vector<hostobj::COSMethodOutput> outputs;
        const std::vector<hostobj::COSDataTypePtr> types = Results<Result>::types();
        [[maybe_unused]] std::size_t i = 0;
        (outputs.push_back({OutputNames::name, types[i++]}), ...);
        return []<class... A>(std::type_identity<std::tuple<A...>>, auto results) {
            return hostobj::COSMethodSignature::createMethodSignature(dataTypeOf<Value<std::shared_ptr<Class>>>(),
                                                                      {dataTypeOf<Value<A>>()...}, std::move(results),
                                                                      kOptional);
        }(std::type_identity<Arguments>(), std::move(outputs));
    }

    /// Argument i of the operation, which is input i + 1; left out, it is an empty optional.
    template <std::size_t i>
    static auto argument(hostobj::HostInputs inputs)
    {
        using T = std::tuple_element_t<i, Arguments>;
        if constexpr (mayBeLeftOut<T>)
            return i + 1 < inputs.size() ? T(Value<T>::read(inputs[i + 1])) : T();
        else
            return Value<T>::read(inputs[i + 1]);
    }

    template <std::size_t... i>
    static hostobj::HostOutputs call(Class& payload, [[maybe_unused]] hostobj::HostInputs inputs,
                                     std::index_sequence<i...>)
    {
        Arguments arguments{argument<i>(inputs)...}; // in their order
        hostobj::HostOutputs outputs;
        outputs.reserve(sizeof...(OutputNames)); // so that what the operation gives is not lost
        if constexpr (std::is_void_v<Result>)
            std::invoke(operation, payload, std::move(std::get<i>(arguments))...);
        else
            Results<Result>::append(std::invoke(operation, payload, std::move(std::get<i>(arguments))...), outputs);
        return outputs;
    }
};

/// Methods of one name, each with a signature and a body of its own. The number of arguments says which is meant.
template <class First, class... Others>
class Overloaded : public hostobj::COSMethodInfo {
    static constexpr ArgumentCounts kCounts[] = {First::kCounts, Others::kCounts...};

public:
    hostobj::COSNameID getName() const override { return First().getName(); }
    hostobj::COSMethodSignaturePtr getSignature() const override { return First().getSignature(); }
    std::vector<hostobj::COSMethodSignaturePtr> getSignatures() const override
    {
        return {First().getSignature(), Others().getSignature()...};
    }
    hostobj::HostOutputs invoke(hostobj::HostInputs inputs, std::size_t wanted) const override
    {
        return guarded([&] {
            if (!inputs.empty()) // without an object that is what is wrong
                requireInputs(inputs.size(), kCounts);
            hostobj::HostOutputs outputs;
            const auto isMeant = [&]<class M>(std::type_identity<M>) {
                if (M::kCounts.include(inputs.size()))
                    return outputs = M().invoke(inputs, wanted), true;
                return false;
            };
            if (!(isMeant(std::type_identity<First>()) || ... || isMeant(std::type_identity<Others>())))
                First().invoke(inputs, wanted); // which refuses them
            return outputs;
        });
    }
};

} // namespace tracery::binding
