#ifndef ZEL_BASE_C_OBJECT_H_
#define ZEL_BASE_C_OBJECT_H_

#include <memory>

namespace ZEL {

/// Root of the shared classes: lets a message carry any of them, and each hand out references to itself.
class CObject : public std::enable_shared_from_this<CObject> {
  public:
    CObject() = default;
    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;
    virtual ~CObject() = default;
};

}  // namespace ZEL

#endif  // ZEL_BASE_C_OBJECT_H_
