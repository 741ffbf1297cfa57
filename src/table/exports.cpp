// The exported kernels: each forwards to the table chosen for this processor. Types come from the public
// declarations.
#include "table/kernels.hpp"

namespace {

template <class Function>
struct Signature;
template <class R, class... A>
struct Signature<R(A...)> {
    using Result = R;
    template <int n, class First, class... Rest>
    struct Pick {
        using Type = typename Pick<n - 1, Rest...>::Type;
    };
    template <class First, class... Rest>
    struct Pick<0, First, Rest...> {
        using Type = First;
    };
    template <int n>
    using Argument = typename Pick<n, A...>::Type;
};

}  // namespace

#define KRO_RESULT(routine) Signature<decltype(routine)>::Result
#define KRO_ARG(routine, n) Signature<decltype(routine)>::Argument<n> a##n
#define KRO_EXPORT_4(routine)                                                                     \
    KRO_RESULT(routine)                                                                           \
    routine(KRO_ARG(routine, 0), KRO_ARG(routine, 1), KRO_ARG(routine, 2), KRO_ARG(routine, 3)) { \
        return kro::bestKernels().routine(a0, a1, a2, a3);                                        \
    }
#define KRO_EXPORT_5(routine)                                                                   \
    KRO_RESULT(routine)                                                                         \
    routine(KRO_ARG(routine, 0), KRO_ARG(routine, 1), KRO_ARG(routine, 2), KRO_ARG(routine, 3), \
            KRO_ARG(routine, 4)) {                                                              \
        return kro::bestKernels().routine(a0, a1, a2, a3, a4);                                  \
    }
#define KRO_EXPORT_6(routine)                                                                                        \
    KRO_RESULT(routine)                                                                                              \
    routine(KRO_ARG(routine, 0), KRO_ARG(routine, 1), KRO_ARG(routine, 2), KRO_ARG(routine, 3), KRO_ARG(routine, 4), \
            KRO_ARG(routine, 5)) {                                                                                   \
        return kro::bestKernels().routine(a0, a1, a2, a3, a4, a5);                                                   \
    }
#define KRO_EXPORT_7(routine)                                                                                        \
    KRO_RESULT(routine)                                                                                              \
    routine(KRO_ARG(routine, 0), KRO_ARG(routine, 1), KRO_ARG(routine, 2), KRO_ARG(routine, 3), KRO_ARG(routine, 4), \
            KRO_ARG(routine, 5), KRO_ARG(routine, 6)) {                                                              \
        return kro::bestKernels().routine(a0, a1, a2, a3, a4, a5, a6);                                               \
    }

extern "C" {
#define KRO_KERNEL(routine, arity, ...) KRO_EXPORT_##arity(routine)
#include "table/kernels.def"
#undef KRO_KERNEL
}
