// messages.h - the exact diagnostics, built from one place: the heading of an
// intrinsic's message or of the error handler's, and the message templates,
// whose '@' marks are filled in order with the given texts.
#pragma once

#include <initializer_list>
#include <string>

namespace testutil::msg {

inline std::string fill(const char* tmpl, std::initializer_list<std::string> fields) {
    std::string s;
    auto f = fields.begin();
    for (const char* p = tmpl; *p; ++p) s += *p == '@' && f != fields.end() ? *f++ : std::string(1, *p);
    return s;
}
// The diagnostic of intrinsic `name` with template `tmpl`.
inline std::string of(const char* name, const char* tmpl, std::initializer_list<std::string> fields = {}) {
    return std::string("ERROR calling the intrinsic subprogram ") + name + ":\n" + fill(tmpl, fields);
}
// The error handler's diagnostic for a name without messages.
inline std::string unknown(const char* name) {
    return std::string("ERROR calling the error handler by the\n intrinsic subprogram, signed by ") + name + ".\n";
}

inline constexpr const char* kDim =
    " The DIM parameter had a value of @.\n Its value should be at least 1 and no larger than @.\n";
inline constexpr const char* kResultShape = " The RESULT array has shape:    @.\n The shape of RESULT should be: @.\n";
inline constexpr const char* kResultSize = " The RESULT array has size @. It should have size @.\n";
inline constexpr const char* kArrayMask =
    " Array arguments ARRAY and MASK should have the same shape.\n"
    " The shape of argument ARRAY is: @.\n The shape of argument MASK is:  @.\n";
inline constexpr const char* kVectors =
    " Array arguments VECTOR_A and VECTOR_B should have the same shape.\n"
    " The shape of argument VECTOR_A is: @.\n The shape of argument VECTOR_B is: @.\n";
inline constexpr const char* kRank2 = " At least one of the array arguments should have rank = 2\n";
inline constexpr const char* kInner =
    " The extent of the last dimension of MATRIX_A is @.\n"
    " The extent of the first dimension of MATRIX_B is @.\n These values should be equal.\n";
inline constexpr const char* kBits =
    " Argument @ has the value @ and argument LEN has the value @.\n"
    " Both arguments should have nonnegative values and their sum should be less than or equal to @.\n";

}  // namespace testutil::msg
