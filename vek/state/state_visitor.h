#ifndef VEK_STATE_STATE_VISITOR_H
#define VEK_STATE_STATE_VISITOR_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

namespace vek
{

/// Goes through the state of a card, to find out how it is laid out, to copy it out, or to copy it in.
///
/// A part of a card that changes while the card runs has a member
///
///     template <typename Visitor>
///     void visitState(Visitor& visit);
///
/// which hands over each of its fields that change, in the same order every time. Facts that never change, what can be
/// worked out from other fields, and the contents of memories, which lie in files of their own, are left out. The
/// fields go out and come in as bytes, so pointers and objects with padding are refused at compile time. Those of a
/// part that may have been exchanged for another one between two runs, like a display, go through madeOf().
///
/// What is copied in may be anything. A field that something else relies on therefore goes through upTo() or finite(),
/// and what must hold among fields goes through check().
class StateVisitor
{
public:
    /// Only finds out size and layout.
    StateVisitor() = default;

    /// Copies a state out to `room`, whose size has to be that of the state.
    static StateVisitor copyingTo(std::span<std::uint8_t> room)
    {
        return {Task::kCopyOut, room.data(), nullptr, room.size()};
    }

    /// Copies a state in from `image`.
    static StateVisitor copyingFrom(std::span<const std::uint8_t> image)
    {
        return {Task::kCopyIn, nullptr, image.data(), image.size()};
    }

    /// Fields of which any value will do: integers, bools, arrays of them, and objects with a visitState().
    template <typename... Fields>
    void operator()(Fields&... fields)
    {
        (visitOne(fields), ...);
    }

    /// An integer or enumeration that is never above `last`.
    template <typename Field>
    void upTo(Field& field, std::type_identity_t<Field> last)
    {
        static_assert(std::is_enum_v<Field> || (std::is_integral_v<Field> && !std::is_same_v<Field, bool>));
        move(&field, sizeof field);
        check(field <= last && field >= Field{});
    }

    /// Numbers of some sensible size, neither infinite nor not a number.
    template <typename... Fields>
    void finite(Fields&... fields)
    {
        static_assert((std::is_floating_point_v<Fields> && ...));
        constexpr double kSensible = 1e15;
        ((move(&fields, sizeof fields), check(fields >= -kSensible && fields <= kSensible)), ...);
    }

    /// The fields that `fields` hands over belong to a part that is described by facts with this hash. When a state is
    /// copied in of a card in which another part was in its place, they are left out: the part stays as it is.
    template <typename Fields>
    void madeOf(std::uint64_t facts, Fields fields)
    {
        std::uint64_t kept = facts;
        move(&kept, sizeof kept);
        const Task task = task_;
        task_ = kept == facts ? task : Task::kSkip;
        fields();
        task_ = task;
    }

    /// Tells whether what has been visited up to here holds together.
    void check(bool sound)
    {
        if (task_ == Task::kCopyIn && !sound) {
            sound_ = false;
        }
    }

    /// Bytes visited so far.
    std::size_t size() const { return size_; }

    /// Another one for another sequence of field sizes (FNV-1a).
    std::uint64_t layout() const { return layout_; }

    /// Whether all that was copied in holds together. If not, the state is not to be used.
    bool sound() const { return sound_; }

private:
    enum class Task : std::uint8_t { kMeasure, kCopyOut, kCopyIn, kSkip };

    StateVisitor(Task task, std::uint8_t* to, const std::uint8_t* from, std::size_t room)
        : task_(task), to_(to), from_(from), room_(room)
    {
    }

    template <typename Field>
    static constexpr bool isPlain = std::is_integral_v<Field>;

    template <typename Field>
    void visitOne(Field& field)
    {
        if constexpr (requires { field.visitState(*this); }) {
            field.visitState(*this);
        } else if constexpr (isPlain<Field>) {
            moveChecked<Field>(&field, sizeof field);
        } else {
            visitArray(field);
        }
    }

    template <typename Element, std::size_t Count>
    void visitArray(std::array<Element, Count>& elements)
    {
        if constexpr (isPlain<Element>) {
            moveChecked<Element>(elements.data(), sizeof elements);
        } else {
            for (Element& element : elements) {
                visitOne(element);
            }
        }
    }

    /// Moves integers; for bools other bytes than 0 and 1 have no meaning at all and do not get in.
    template <typename Integer>
    void moveChecked(void* bytes, std::size_t size)
    {
        if constexpr (std::is_same_v<Integer, bool>) {
            const bool copiesIn = task_ == Task::kCopyIn && size <= room_;
            if (copiesIn && !std::all_of(from_, from_ + size, [](std::uint8_t byte) { return byte <= 1; })) {
                sound_ = false;
                return;
            }
        }
        move(bytes, size);
    }

    void move(void* bytes, std::size_t size)
    {
        size_ += size;
        switch (task_) {
            case Task::kMeasure:
                addToLayout(size);
                return;
            case Task::kCopyOut:
            case Task::kCopyIn:
            case Task::kSkip:
                moveInRoom(bytes, size);
                return;
        }
    }

    void moveInRoom(void* bytes, std::size_t size)
    {
        if (size > room_) {
            sound_ = false;
            return;
        }
        room_ -= size;
        if (task_ == Task::kCopyOut) {
            std::memcpy(to_, bytes, size);
            to_ += size;
            return;
        }
        if (task_ == Task::kCopyIn) {
            std::memcpy(bytes, from_, size);
        }
        from_ += size;
    }

    void addToLayout(std::size_t size)
    {
        constexpr std::uint64_t kPrime = 0x100'0000'01b3;
        layout_ = (layout_ ^ size) * kPrime;
    }

    Task task_ = Task::kMeasure;
    bool sound_ = true;
    std::uint8_t* to_ = nullptr;
    const std::uint8_t* from_ = nullptr;
    std::size_t room_ = 0;  ///< Bytes left in what is copied to or from.
    std::size_t size_ = 0;
    std::uint64_t layout_ = 0xcbf2'9ce4'8422'2325;
};

}  // namespace vek

#endif
