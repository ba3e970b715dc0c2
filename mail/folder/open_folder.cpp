// Open folders and the memory of their entries. A full index takes 160 MB, more than the data limit
// that a site sets for its programs; shared anonymous memory is not counted by that limit. Entries
// come in chunks, of which only the pages that are written take memory. Where such memory is
// refused (address space limits), each entry is a malloc block.

#include "open_folder.h"

#include <sys/mman.h>
#include <sys/resource.h>

#include <cstdlib>
#include <new>

namespace attalven {

namespace {

OpenFolder* openFolders = nullptr;  // every folder that is open in this process

/// Private memory costs less where nothing limits it.
int kindOfMemory() {
    rlimit limit;
    bool isLimited = getrlimit(RLIMIT_DATA, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY;
    return isLimited ? MAP_SHARED : MAP_PRIVATE;
}

EntryChunk* newChunk(EntryChunk* next) {
    void* memory = mmap(nullptr, sizeof(EntryChunk), PROT_READ | PROT_WRITE,
                        kindOfMemory() | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED) return nullptr;
    EntryChunk* chunk = static_cast<EntryChunk*>(memory);
    chunk->next = next;
    return chunk;
}

bool isIn(const EntryChunk* chunk, const FldrMsg* entry) {
    return entry >= chunk->entries && entry < chunk->entries + EntryChunk::kEntries;
}

}  // namespace

OpenFolder* OpenFolder::create() {
    void* memory = malloc(sizeof(OpenFolder));
    if (!memory) return nullptr;
    OpenFolder* folder = new (memory) OpenFolder;
    folder->next = openFolders;
    openFolders = folder;
    return folder;
}

OpenFolder* OpenFolder::of(const Fldr* record) {
    OpenFolder* folder = openFolders;
    while (folder && &folder->record != record) folder = folder->next;
    return folder;
}

FldrMsg* OpenFolder::newEntry() {
    if (!chunks || chunks->used == EntryChunk::kEntries)
        if (EntryChunk* chunk = newChunk(chunks)) chunks = chunk;
    if (chunks && chunks->used < EntryChunk::kEntries) return &chunks->entries[chunks->used];
    return static_cast<FldrMsg*>(calloc(1, sizeof(FldrMsg)));
}

void OpenFolder::dropEntry(FldrMsg* entry) const {
    if (!ownsEntry(entry)) free(entry);
}

void OpenFolder::addEntry(FldrMsg* entry) {
    if (chunks && entry == &chunks->entries[chunks->used]) chunks->used++;
    record.msgs[record.msgCount++] = entry;
    entry->num = record.msgCount;
}

bool OpenFolder::ownsEntry(const FldrMsg* entry) const {
    const EntryChunk* chunk = chunks;
    while (chunk && !isIn(chunk, entry)) chunk = chunk->next;
    return chunk;
}

}  // namespace attalven

void fldrFree(Fldr* f) {
    using namespace attalven;
    if (!f) return;
    OpenFolder* known = OpenFolder::of(f);
    for (FldrMsg* entry : f->msgs)
        if (entry && !(known && known->ownsEntry(entry))) free(entry);
    if (known) {
        OpenFolder** link = &openFolders;
        while (*link != known) link = &(*link)->next;
        *link = known->next;
        for (EntryChunk* chunk = known->chunks; chunk;) {
            EntryChunk* next = chunk->next;
            munmap(chunk, sizeof(EntryChunk));
            chunk = next;
        }
        if (known->ownsStream && f->fp) fclose(f->fp);
        known->~OpenFolder();
    }
    free(f);
}
