// Where the hardened programs begin: the C library's own entry, which an indirect jump reaches, has no landing pad.

extern "C" [[gnu::naked]] void startOnLandingPad()
{
    asm("jmp _start");
}
