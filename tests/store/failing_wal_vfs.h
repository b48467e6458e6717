#pragma once

#include <sqlite3.h>

#include <atomic>
#include <stdexcept>

namespace tevra::testing {

// Makes the disk refuse writes to write-ahead logs, as a full or failing disk
// would at a COMMIT: while installed, every database opened in the process
// goes through the system's own file layer, except that the next failWrites
// writes to a "-wal" file fail with an I/O error. walSyncs counts the flushes
// of "-wal" files to the disk.
class FailingWalVfs {
public:
    FailingWalVfs() {
        real_ = sqlite3_vfs_find(nullptr);
        vfs_ = *real_;
        vfs_.zName = "tevra-failing-wal";
        vfs_.szOsFile = static_cast<int>(sizeof(File)) + real_->szOsFile;
        vfs_.pAppData = this;
        vfs_.xOpen = open;
        if (sqlite3_vfs_register(&vfs_, /*makeDflt=*/1) != SQLITE_OK) {
            throw std::runtime_error("cannot register the failing VFS");
        }
    }
    ~FailingWalVfs() {
        sqlite3_vfs_unregister(&vfs_);
        sqlite3_vfs_register(real_, 1);
    }
    FailingWalVfs(const FailingWalVfs&) = delete;
    FailingWalVfs& operator=(const FailingWalVfs&) = delete;

    std::atomic<int> failWrites{0};
    std::atomic<int> walSyncs{0};

private:
    struct File {
        sqlite3_file base;
        FailingWalVfs* owner;
        bool wal;
        sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
    };

    static File* self(sqlite3_file* f) { return reinterpret_cast<File*>(f); }
    static const sqlite3_io_methods* realMethods(sqlite3_file* f) {
        return self(f)->real()->pMethods;
    }

    static int open(sqlite3_vfs* vfs, const char* name, sqlite3_file* f, int flags, int* out) {
        auto* owner = static_cast<FailingWalVfs*>(vfs->pAppData);
        File* file = self(f);
        file->owner = owner;
        file->wal = (flags & SQLITE_OPEN_WAL) != 0;
        file->base.pMethods = nullptr;
        const int rc = owner->real_->xOpen(owner->real_, name, file->real(), flags, out);
        if (file->real()->pMethods != nullptr) {
            file->base.pMethods = &kMethods;
        }
        return rc;
    }

    static int write(sqlite3_file* f, const void* data, int amount, sqlite3_int64 offset) {
        File* file = self(f);
        if (file->wal && file->owner->failWrites.fetch_sub(1) > 0) {
            return SQLITE_IOERR_WRITE;
        }
        return realMethods(f)->xWrite(file->real(), data, amount, offset);
    }

    // Everything else goes to the real file as it stands.
    static constexpr sqlite3_io_methods kMethods = {
        3,
        [](sqlite3_file* f) {
            const int rc = realMethods(f)->xClose(self(f)->real());
            f->pMethods = nullptr;
            return rc;
        },
        [](sqlite3_file* f, void* data, int amount, sqlite3_int64 offset) {
            return realMethods(f)->xRead(self(f)->real(), data, amount, offset);
        },
        write,
        [](sqlite3_file* f, sqlite3_int64 size) {
            return realMethods(f)->xTruncate(self(f)->real(), size);
        },
        [](sqlite3_file* f, int flags) {
            self(f)->owner->walSyncs += self(f)->wal ? 1 : 0;
            return realMethods(f)->xSync(self(f)->real(), flags);
        },
        [](sqlite3_file* f, sqlite3_int64* size) {
            return realMethods(f)->xFileSize(self(f)->real(), size);
        },
        [](sqlite3_file* f, int lock) { return realMethods(f)->xLock(self(f)->real(), lock); },
        [](sqlite3_file* f, int lock) { return realMethods(f)->xUnlock(self(f)->real(), lock); },
        [](sqlite3_file* f, int* out) {
            return realMethods(f)->xCheckReservedLock(self(f)->real(), out);
        },
        [](sqlite3_file* f, int op, void* arg) {
            return realMethods(f)->xFileControl(self(f)->real(), op, arg);
        },
        [](sqlite3_file* f) { return realMethods(f)->xSectorSize(self(f)->real()); },
        [](sqlite3_file* f) { return realMethods(f)->xDeviceCharacteristics(self(f)->real()); },
        [](sqlite3_file* f, int page, int size, int extend, void volatile** out) {
            return realMethods(f)->xShmMap(self(f)->real(), page, size, extend, out);
        },
        [](sqlite3_file* f, int offset, int n, int flags) {
            return realMethods(f)->xShmLock(self(f)->real(), offset, n, flags);
        },
        [](sqlite3_file* f) { realMethods(f)->xShmBarrier(self(f)->real()); },
        [](sqlite3_file* f, int deleteFlag) {
            return realMethods(f)->xShmUnmap(self(f)->real(), deleteFlag);
        },
        [](sqlite3_file* f, sqlite3_int64 offset, int amount, void** out) {
            return realMethods(f)->xFetch(self(f)->real(), offset, amount, out);
        },
        [](sqlite3_file* f, sqlite3_int64 offset, void* page) {
            return realMethods(f)->xUnfetch(self(f)->real(), offset, page);
        },
    };

    sqlite3_vfs* real_ = nullptr;
    sqlite3_vfs vfs_{};
};

}  // namespace tevra::testing
