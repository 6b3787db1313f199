#include "prim/dispatch.h"

namespace vx::prim {

// Readable before any constructor has run: a host's own static initialiser may call the library.
constinit int primCpuColumn = 0;

#define VX_DECLARE(variant, name) \
  namespace variant {             \
  decltype(prim::name) name;      \
  }
#define VX_PRIM(name, params, args) VX_FOR_EACH_BODY(VX_DECLARE, name)
#include "prim/prim_list.def"
#undef VX_PRIM

#define VX_ADDRESS(variant, name) &variant::name,
#define VX_PRIM(name, params, args) \
  constinit decltype(&prim::name) const table::name[] = {VX_FOR_EACH_COLUMN(VX_ADDRESS, name)};
#include "prim/prim_list.def"
#undef VX_PRIM

#define VX_PRIM(name, params, args) \
  int name params { return table::name[primCpuColumn] args; }
#include "prim/prim_list.def"
#undef VX_PRIM

const char* columnName(int column) {
#define VX_NAME(variant, x) #variant,
  static constexpr const char* kNames[] = {VX_FOR_EACH_COLUMN(VX_NAME, )};
#undef VX_NAME
  return kNames[column];
}

}  // namespace vx::prim
