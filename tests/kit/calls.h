#ifndef ATTALVEN_TESTS_KIT_CALLS_H
#define ATTALVEN_TESTS_KIT_CALLS_H

// Tables of calls: a section names a function, its rows are arguments and results. The result of a
// call is shown as text, whatever its type; "(null)" stands for NULL on both sides.

#include <concepts>
#include <map>
#include <utility>

#include "site.h"
#include "table.h"

namespace kit {

/// A text in memory of exactly its size, so that a sanitizer sees the first byte too far; a number
/// where the function takes one.
class Argument {
  public:
    explicit Argument(const std::string& text);
    operator char*() { return text_.get(); }
    operator std::string_view() const { return {text_.get(), size_}; }
    template <std::integral T>
    operator T() const {
        return static_cast<T>(strtoll(text_.get(), nullptr, 0));
    }

  private:
    std::unique_ptr<char[]> text_;
    size_t size_ = 0;
};

using Arguments = std::vector<Argument>;
using Call = std::function<std::string(Arguments&)>;

template <typename Result, typename... P, size_t... kIndex>
Result invoke(Result (*function)(P...), Arguments& a, std::index_sequence<kIndex...>) {
    return function(a.at(kIndex)...);
}

/// The function's heap text, number, text of its own (static or part of an argument), or output.
template <typename... P>
Call heap(char* (*function)(P...)) {
    return
        [=](Arguments& a) { return taken(invoke(function, a, std::index_sequence_for<P...>())); };
}
template <typename Result, typename... P>
Call result(Result (*function)(P...)) {
    return [=](Arguments& a) -> std::string {
        auto value = invoke(function, a, std::index_sequence_for<P...>());
        if constexpr (std::is_arithmetic_v<Result>)
            return std::to_string(value);
        else if constexpr (std::is_pointer_v<Result>)
            return value ? value : "(null)";
        else
            return value;
    };
}
template <typename... P>
Call printed(void (*function)(P...)) {
    return [=](Arguments& a) {
        return outputOf([&] { invoke(function, a, std::index_sequence_for<P...>()); });
    };
}

/// Entries of a map of calls, under the function's own name.
#define HEAP(function) \
    { #function, kit::heap(function) }
#define RESULT(function) \
    { #function, kit::result(function) }
#define PRINTED(function) \
    { #function, kit::printed(function) }

/// Runs the rows of tests/data/NAME in order. Beside `calls` a table may use "setenv" (name and
/// value), and with a `dir` "file" (a path below it and its content); DIR in a row stands for it.
void runTable(const std::string& name, std::map<std::string, Call> calls,
              const std::string& dir = "");

}  // namespace kit

#endif
