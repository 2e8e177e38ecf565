#pragma once

#include <vantu/Export.h>

#include <memory>

namespace vantu {

class CQorStorage;
class IQorMemoryManager;

/// Base of objects whose memory a manager may page out to storage.
///
/// The library never calls these operations; they lead the virtual table that `IQorImage` extends, so their
/// order is part of the contract.
class VANTU_API CQorManagedObject {
public:
    virtual ~CQorManagedObject() = default;

    /// Writes the object's data to its storage. @return false if there is no storage or it refused.
    virtual bool Store() const = 0;
    /// Drops what was stored. @return false if nothing was stored.
    virtual bool Erase() = 0;
    /// Brings the data back into memory. @return false if it could not be read.
    virtual bool Load() const = 0;
    /// Frees the memory of data that is stored. @return false if the data is not stored.
    virtual bool Unload() const = 0;
    /// Whether a manager should take care of the object.
    virtual bool NeedsManagement() const = 0;
    /// Gives the object a place to be paged out to.
    /// @param storage held by the object.
    /// @param key of the object in the storage.
    /// @param manager not owned; may be null.
    /// @return false if it takes none.
    virtual bool SetStorage(std::shared_ptr<CQorStorage> storage, unsigned int key,
                            IQorMemoryManager* manager) const = 0;

protected:
    /// For implementations alone.
    /// @{
    CQorManagedObject() = default;
    CQorManagedObject(const CQorManagedObject&) = default;
    CQorManagedObject& operator=(const CQorManagedObject&) = default;
    /// @}
};

}  // namespace vantu
