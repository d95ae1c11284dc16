// FOR_EACH(macro, context, a, b, c) is macro(context, a) macro(context, b) macro(context, c).
// FOR_EACH_COMMA puts commas between. Up to 85 items; more leave FOR_EACH_AGAIN
// in the text, which does not compile.
#pragma once

#define FOR_EACH_PARENS ()
#define FOR_EACH_EXPAND(...) FOR_EACH_EXPAND3(FOR_EACH_EXPAND3(FOR_EACH_EXPAND3(FOR_EACH_EXPAND3(__VA_ARGS__))))
#define FOR_EACH_EXPAND3(...) FOR_EACH_EXPAND2(FOR_EACH_EXPAND2(FOR_EACH_EXPAND2(FOR_EACH_EXPAND2(__VA_ARGS__))))
#define FOR_EACH_EXPAND2(...) FOR_EACH_EXPAND1(FOR_EACH_EXPAND1(FOR_EACH_EXPAND1(FOR_EACH_EXPAND1(__VA_ARGS__))))
#define FOR_EACH_EXPAND1(...) __VA_ARGS__

#define FOR_EACH(macro, context, ...) __VA_OPT__(FOR_EACH_EXPAND(FOR_EACH_STEP(macro, context, __VA_ARGS__)))
#define FOR_EACH_STEP(macro, context, first, ...)                                                                      \
    macro(context, first) __VA_OPT__(FOR_EACH_AGAIN FOR_EACH_PARENS(macro, context, __VA_ARGS__))
#define FOR_EACH_AGAIN() FOR_EACH_STEP

#define FOR_EACH_COMMA(macro, context, ...)                                                                            \
    __VA_OPT__(FOR_EACH_EXPAND(FOR_EACH_COMMA_STEP(macro, context, __VA_ARGS__)))
#define FOR_EACH_COMMA_STEP(macro, context, first, ...)                                                                \
    macro(context, first) __VA_OPT__(, FOR_EACH_COMMA_AGAIN FOR_EACH_PARENS(macro, context, __VA_ARGS__))
#define FOR_EACH_COMMA_AGAIN() FOR_EACH_COMMA_STEP
