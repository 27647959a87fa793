#include "project/RGBAColor.h"

#include "project/Clean.h"

namespace keldra {

RGBAColor cleaned(const RGBAColor& color) {
    return {finiteWithin(color.red, 0, 1), finiteWithin(color.green, 0, 1), finiteWithin(color.blue, 0, 1),
            finiteWithin(color.alpha, 0, 1)};
}

} // namespace keldra
