#ifndef VEK_CARD_LOCK_H
#define VEK_CARD_LOCK_H

namespace vek
{

/// Who may work on a card that several programs share, and threads of one.
class CardLock
{
public:
    /// Waits until the caller has the card for itself, as others have left it, which it may have already. Returns
    /// VEK_OK, or why the card cannot be had: everything that the caller then does to the card is refused with the same
    /// result. Has to be followed by leave() either way.
    virtual int enter() = 0;

    /// Ends what enter() has begun. With the last one others see what the caller has done, and the card is theirs.
    /// Returns VEK_OK, what enter() has, or why the others do not see it.
    virtual int leave() = 0;

protected:
    constexpr CardLock() = default;
    ~CardLock() = default;
};

/// Has a card for itself to the end of the scope, so that what belongs together is done without anything of others in
/// between. A card that cannot be had refuses what is done to it.
class CardHold
{
public:
    /// `lock` is null for a card that is nobody else's.
    explicit CardHold(CardLock* lock) : lock_(lock)
    {
        if (lock_ != nullptr) {
            lock_->enter();
        }
    }
    ~CardHold()
    {
        if (lock_ != nullptr) {
            lock_->leave();
        }
    }
    CardHold(const CardHold&) = delete;
    CardHold& operator=(const CardHold&) = delete;

private:
    CardLock* lock_;
};

}  // namespace vek

#endif
