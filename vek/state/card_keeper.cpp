#include "state/card_keeper.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace vek
{
namespace
{

constexpr const char* kStateName = "state";
constexpr const char* kLockName = "lock";

/// A visitor of memories that calls a function with the name and the size of each until one fails.
template <typename Use>
class MemoryFiles
{
public:
    explicit MemoryFiles(Use use) : use_(use) {}

    template <typename Memory>
    void operator()(const char* name, Memory& memory)
    {
        if (result_ == VEK_OK) {
            result_ = use_(name, memory.size());
        }
    }

    int result() const { return result_; }

private:
    Use use_;
    int result_ = VEK_OK;
};

/// Gives memories their files, in the order in which they were mapped.
template <typename NextBase>
class MemoryAdoption
{
public:
    explicit MemoryAdoption(NextBase nextBase) : nextBase_(nextBase) {}

    template <typename Memory>
    void operator()(const char* /*name*/, Memory& memory)
    {
        memory.adopt(nextBase_());
    }

private:
    NextBase nextBase_;
};

/// The files end with a page.
std::uint64_t wholePages(std::uint64_t size)
{
    constexpr std::uint64_t kPage = 4096;
    return (size + kPage - 1) / kPage * kPage;
}

}  // namespace

void CardKeeper::visit(StateVisitor& visitor)
{
    visitor(kept_.card, kept_.driver);
}

std::span<const std::uint8_t> CardKeeper::copyOut(Image& image)
{
    const auto room = std::span(image).first(kind_.size);
    StateVisitor visitor = StateVisitor::copyingTo(room);
    visit(visitor);
    return room;
}

/// Puts the card into a state, unless that does not hold together: the card stays in the one that it is in.
bool CardKeeper::copyIn(std::span<const std::uint8_t> image)
{
    StateVisitor visitor = StateVisitor::copyingFrom(image);
    visit(visitor);
    if (!visitor.sound()) {
        StateVisitor back = StateVisitor::copyingFrom(std::span(present_).first(kind_.size));
        visit(back);
    }
    return visitor.sound();
}

int CardKeeper::open(const char* folder)
{
    StateVisitor measure;
    visit(measure);
    kind_ = {.size = measure.size(), .layout = measure.layout(), .card = kept_.description};
    copyOut(present_);
    Descriptor opened;
    int result = openFolder(folder, opened);
    if (result == VEK_OK) {
        result = mapFiles(opened);
    }
    if (result == VEK_OK) {
        result = begin();
    }
    if (result != VEK_OK) {
        unmapFiles();
    }
    return result;
}

/// Opens the card's folder in the folder of that name; makes either if there is none.
int CardKeeper::openFolder(const char* name, Descriptor& folder)
{
    const StatePath path(name);
    Descriptor parent;
    int result = makeStateFolder({AT_FDCWD, name, path}, parent);
    if (result != VEK_OK) {
        return result;
    }
    std::array<char, 16> card{};
    std::snprintf(card.data(), card.size(), "card%d", kept_.index);
    path_ = path / card.data();
    result = openStateFolder({parent.number(), card.data(), *path_}, folder);
    if (result != VEK_NO_RESPONSE) {
        return result;
    }
    result = makeFolder({parent.number(), name, path}, card.data());
    return result == VEK_OK ? openStateFolder({parent.number(), card.data(), *path_}, folder) : result;
}

/// Makes the card's folder, which is there with everything in it or not at all. What a program has left that was killed
/// at this is used again.
int CardKeeper::makeFolder(const StateEntry& parent, const char* name)
{
    const StatePath lockPath = parent.path / kLockName;
    Descriptor lock;
    int result = makeStateFile({parent.folder, kLockName, lockPath}, 0, lock);
    if (result != VEK_OK) {
        return result;
    }
    result = lockFile(lock.number(), patience_);
    if (result != VEK_OK) {
        return complain(lockPath, "another program does not come to an end with it", result);
    }
    if (faccessat(parent.folder, name, F_OK, AT_SYMLINK_NOFOLLOW) == 0) {
        return VEK_OK;
    }
    std::array<char, 16> newName{};
    std::snprintf(newName.data(), newName.size(), "%s.new", name);
    const StatePath newPath = parent.path / newName.data();
    Descriptor folder;
    result = makeStateFolder({parent.folder, newName.data(), newPath}, folder);
    if (result == VEK_OK) {
        result = makeFiles(folder, newPath);
    }
    if (result == VEK_OK && renameat(parent.folder, newName.data(), parent.folder, name) != 0) {
        result = complainOfSystem(newPath, errno);
    }
    return result;
}

int CardKeeper::makeFiles(const Descriptor& folder, const StatePath& path)
{
    MemoryFiles files([&](const char* name, std::uint64_t size) {
        Descriptor file;
        return makeStateFile({folder.number(), name, path / name}, wholePages(size), file);
    });
    kept_.card.visitMemories(files);
    return files.result() == VEK_OK ? makeState({folder.number(), kStateName, path / kStateName}) : files.result();
}

int CardKeeper::makeState(const StateEntry& entry)
{
    const std::size_t size = Snapshot::fileSize(kind_.size);
    Descriptor file;
    int result = makeStateFile(entry, size, file);
    if (result != VEK_OK) {
        return result;
    }
    // The disk has to have room for all of it now: later there is nobody to tell.
    const int error = posix_fallocate(file.number(), 0, static_cast<off_t>(size));
    if (error != 0) {
        return complainOfSystem(entry.path, error);
    }
    void* base = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file.number(), 0);
    if (base == MAP_FAILED) {
        return complainOfSystem(entry.path, errno);
    }
    Snapshot(static_cast<unsigned char*>(base), kind_.size).create(kind_, std::span(present_).first(kind_.size));
    munmap(base, size);
    return VEK_OK;
}

int CardKeeper::mapFile(const StateEntry& entry, std::uint64_t size, Descriptor& file)
{
    const int result = openStateFile(entry, size, file);
    if (result != VEK_OK) {
        return result;
    }
    void* base = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_NORESERVE, file.number(), 0);
    if (base == MAP_FAILED) {
        return complainOfSystem(entry.path, errno);
    }
    const Mapping mapping{static_cast<unsigned char*>(base), size, entry.name};
    mappings_[mappingCount_++] = mapping;
    return guardMapping(mapping.base, mapping.length, mapping.name, loss_)
               ? VEK_OK
               : complain(entry.path, "too many files of cards are open", VEK_IO_ERROR);
}

/// Maps the state and then the memories.
int CardKeeper::mapFiles(const Descriptor& folder)
{
    loss_.folder = path_->text();
    loss_.lost = false;
    Descriptor state;
    const int result =
        mapFile({folder.number(), kStateName, *path_ / kStateName}, Snapshot::fileSize(kind_.size), state);
    if (result != VEK_OK) {
        return result;
    }
    stateFile_ = state.release();
    snapshot_.emplace(mappings_[0].base, kind_.size);
    const char* fault = snapshot_->fault(kind_);
    if (fault != nullptr) {
        return complain(*path_ / kStateName, fault, VEK_BAD_DATA);
    }
    MemoryFiles files([&](const char* name, std::uint64_t size) {
        Descriptor file;
        return mapFile({folder.number(), name, *path_ / name}, wholePages(size), file);
    });
    kept_.card.visitMemories(files);
    return files.result();
}

void CardKeeper::unmapFiles()
{
    forgetMappings(loss_);
    while (mappingCount_ > 0) {
        const Mapping& mapping = mappings_[--mappingCount_];
        munmap(mapping.base, mapping.length);
    }
    static_cast<void>(Descriptor(stateFile_));
    stateFile_ = -1;
}

/// Puts the card into the state of the files.
int CardKeeper::begin()
{
    int result = lockFile(stateFile_, patience_);
    if (result != VEK_OK) {
        return complain(*path_ / kStateName, "another program does not come to an end with it", result);
    }
    result = readState();
    unlockFile(stateFile_);
    if (result != VEK_OK || lost()) {
        return result != VEK_OK ? result : VEK_IO_ERROR;
    }
    MemoryAdoption adoption([mapping = mappings_.begin()]() mutable { return (++mapping)->base; });
    kept_.card.visitMemories(adoption);
    kept_.card.clock.keep();
    return VEK_OK;
}

/// Brings the card up to what others have done.
int CardKeeper::readState()
{
    if (snapshot_->newest() == number_) {
        return VEK_OK;
    }
    const auto [number, state] = snapshot_->find();
    if (lost()) {
        return VEK_IO_ERROR;
    }
    if (number == number_ && number != 0) {
        return VEK_OK;
    }
    if (number == 0 || !copyIn(state)) {
        if (!complained_) {
            complained_ = true;
            complain(*path_ / kStateName, "is damaged", VEK_BAD_DATA);
        }
        return VEK_BAD_DATA;
    }
    std::copy(state.begin(), state.end(), present_.begin());
    number_ = number;
    return VEK_OK;
}

// Who has waited in vain does not wait again for every access of a long run.
int CardKeeper::lockState()
{
    constexpr std::uint64_t kRest = 1'000'000'000;
    const bool rests = restsUntil_ != 0 && monotonicNanoseconds() < restsUntil_;
    const int result = lockFile(stateFile_, rests ? 0 : patience_);
    if (result == VEK_OK) {
        restsUntil_ = 0;
    } else if (!rests) {
        restsUntil_ = monotonicNanoseconds() + kRest;
    }
    return result;
}

int CardKeeper::beginWork()
{
    if (lost()) {
        return VEK_IO_ERROR;
    }
    int result = lockState();
    if (result == VEK_OK) {
        result = readState();
        if (result != VEK_OK) {
            unlockFile(stateFile_);
        }
    }
    return result;
}

int CardKeeper::endWork()
{
    const auto state = copyOut(changed_);
    if (!lost() && !std::equal(state.begin(), state.end(), present_.begin())) {
        snapshot_->store(number_ + 1, state);
        std::copy(state.begin(), state.end(), present_.begin());
        ++number_;
    }
    unlockFile(stateFile_);
    return lost() ? VEK_IO_ERROR : VEK_OK;
}

int CardKeeper::enter()
{
    pthread_mutex_lock(&mutex_);
    if (depth_++ == 0) {
        refusal_ = beginWork();
    }
    return refusal_;
}

int CardKeeper::leave()
{
    int result = refusal_;
    if (--depth_ == 0) {
        result = refusal_ == VEK_OK ? endWork() : refusal_;
        refusal_ = VEK_OK;
    }
    pthread_mutex_unlock(&mutex_);
    return result;
}

}  // namespace vek
