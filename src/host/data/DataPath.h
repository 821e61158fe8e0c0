#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "data/Schema.h"

namespace Host {

/// One step on the way to a node: the node, and which entry of it.
struct Step {
  const Node* node;
  const void* key = nullptr;  ///< the entry's key, of the type that the node's row has; or null
  std::size_t position = 0;   ///< counted from 1 where the key is not known; 0: no entry is meant
};

/// The instance identifier (RFC 7951, section 6.11) of what the steps lead to, for instance
/// /vela-l3:policy-source/policy-set[device-name='fw1']; the node of the first step is a container.
/// An entry whose key is not known is written by its position: policy-set[2].
std::string pathOf(std::span<const Step> steps);

}  // namespace Host
