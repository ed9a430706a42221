// Macros that define the functions of the operations table with the types that their headers declare.
//
// In a row OPERATION(name, roles...), OPERATION_HEAD(name, roles...) is the function's head; its parameters are named a
// to h, and OPERATION_PARAMETERS(roles...) are their names, each behind a comma.
#pragma once

#include "host/call/operations.h"

#define OPERATION_COUNT_(a, b, c, d, e, f, g, h, count, ...) count
#define OPERATION_COUNT(...) OPERATION_COUNT_(__VA_ARGS__ __VA_OPT__(, ) 8, 7, 6, 5, 4, 3, 2, 1, 0)
#define OPERATION_JOIN_(one, other) one##other
#define OPERATION_JOIN(one, other) OPERATION_JOIN_(one, other)

#define OPERATION_TYPE(name, i) [[maybe_unused]] host::TypesOf<decltype(name)>::Parameter<i>
#define OPERATION_TYPES_0(name)
#define OPERATION_TYPES_1(name) OPERATION_TYPE(name, 0) a
#define OPERATION_TYPES_2(name) OPERATION_TYPES_1(name), OPERATION_TYPE(name, 1) b
#define OPERATION_TYPES_3(name) OPERATION_TYPES_2(name), OPERATION_TYPE(name, 2) c
#define OPERATION_TYPES_4(name) OPERATION_TYPES_3(name), OPERATION_TYPE(name, 3) d
#define OPERATION_TYPES_5(name) OPERATION_TYPES_4(name), OPERATION_TYPE(name, 4) e
#define OPERATION_TYPES_6(name) OPERATION_TYPES_5(name), OPERATION_TYPE(name, 5) f
#define OPERATION_TYPES_7(name) OPERATION_TYPES_6(name), OPERATION_TYPE(name, 6) g
#define OPERATION_TYPES_8(name) OPERATION_TYPES_7(name), OPERATION_TYPE(name, 7) h

#define OPERATION_NAMES_0
#define OPERATION_NAMES_1 , a
#define OPERATION_NAMES_2 , a, b
#define OPERATION_NAMES_3 , a, b, c
#define OPERATION_NAMES_4 , a, b, c, d
#define OPERATION_NAMES_5 , a, b, c, d, e
#define OPERATION_NAMES_6 , a, b, c, d, e, f
#define OPERATION_NAMES_7 , a, b, c, d, e, f, g
#define OPERATION_NAMES_8 , a, b, c, d, e, f, g, h

#define OPERATION_HEAD(name, ...) \
    host::TypesOf<decltype(name)>::Result name(OPERATION_JOIN(OPERATION_TYPES_, OPERATION_COUNT(__VA_ARGS__))(name))
#define OPERATION_PARAMETERS(...) OPERATION_JOIN(OPERATION_NAMES_, OPERATION_COUNT(__VA_ARGS__))

// The signature of a row, and the arguments of the present call.
#define OPERATION_SIGNATURE(name, ...)                                                                        \
    using enum host::Role;                                                                                    \
    static constexpr host::Signature signature = host::signature_of(&name, #name __VA_OPT__(, ) __VA_ARGS__); \
    const auto arguments = host::arguments_of<signature.num_arguments()>(signature OPERATION_PARAMETERS(__VA_ARGS__))
