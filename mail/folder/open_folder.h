#ifndef ATTALVEN_MAIL_FOLDER_OPEN_FOLDER_H
#define ATTALVEN_MAIL_FOLDER_OPEN_FOLDER_H

// What the library knows of an open folder beside its public record: the memory of the entries, and
// what the file was like when it was indexed. Callers may also hand in records of their own making,
// of which nothing is known.

#include "side_files.h"

namespace attalven {

/// A run of entries in memory of its own.
struct EntryChunk {
    static constexpr size_t kEntries = 1024;
    EntryChunk* next;
    size_t used;
    FldrMsg entries[kEntries];
};

struct OpenFolder {
    Fldr record = {};  // first: the record's address is this one's
    OpenFolder* next = nullptr;
    EntryChunk* chunks = nullptr;

    bool ownsStream = false;
    Descriptor marker;  // that we made; open, so that no other file gets its inode number

    FileState indexed;  // the file as the index shows it
    // Whether it was changed so shortly before that another change may not show.
    bool timesAreCoarse = true;
    int64_t firstMessage = -1;  // position of the first From_ line
    int64_t end = 0;            // where the index ends; what lies behind has no entry
    uint64_t fingerprint = 0;   // of the messages before `end`

    /// A new empty folder, NULL when memory is out. fldrFree() releases it.
    static OpenFolder* create();
    /// What is known of `record`, NULL when the library did not make it.
    static OpenFolder* of(const Fldr* record);
    /// Memory of an entry, NULL when memory is out; addEntry() or dropEntry() follows. Its texts
    /// are empty or those of an entry that was dropped.
    FldrMsg* newEntry();
    void dropEntry(FldrMsg* entry) const;
    void addEntry(FldrMsg* entry);
    bool ownsEntry(const FldrMsg* entry) const;
};

}  // namespace attalven

#endif
