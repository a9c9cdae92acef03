#pragma once

#include <QString>

namespace varo {

/// The one question to the host: the value of a property that only it knows.
class PropertySource {
  public:
    virtual ~PropertySource() = default;

    /// The host's value as text; "" when the host has none. The host may do anything meanwhile, and
    /// turn the control to something else.
    virtual QString propertyValue(const QString& name) = 0;
};

}  // namespace varo
