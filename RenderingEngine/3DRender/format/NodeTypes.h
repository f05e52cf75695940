#pragma once

#include "format/TypeRegistry.h"

namespace multiscene {

class QVObject3DFpsBase;

/// Node types by the "type" of their dictionary.
using NodeTypes = TypeRegistry<QVObject3DFpsBase>;

inline constexpr KeyVariants nodeVariants = variantsOfTypes<NodeTypes>("node", "type");
/// A dictionary of a list of nodes.
inline constexpr KeyTable nodeKeys{"Nodes", "What a scene shows.", nullptr, {}, &nodeVariants};

}  // namespace multiscene

/// In the class's .cpp, inside namespace multiscene: makes the node type known to scene files.
#define QV_REGISTER_NODE_TYPE(Class, keyTable)              \
    static const NodeTypes::Registration registered##Class( \
        #Class, []() -> std::shared_ptr<QVObject3DFpsBase> { return std::make_shared<Class>(); }, keyTable)
