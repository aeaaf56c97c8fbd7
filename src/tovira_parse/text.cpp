#include "tovira_parse/text.h"

#include <cstring>

namespace
{

void shiftLetters(char* text, char first, char last, char to)
{
    for (char* letter = text; *letter != '\0'; ++letter) {
        if (*letter >= first && *letter <= last) {
            *letter = static_cast<char>(*letter - first + to);
        }
    }
}

}  // namespace

void upperCase(char* text)
{
    shiftLetters(text, 'a', 'z', 'A');
}

void lowerCase(char* text)
{
    shiftLetters(text, 'A', 'Z', 'a');
}

char* Tokens::next(const char* delimiters)
{
    char* const token = rest + strspn(rest, delimiters);
    if (*token == '\0') {
        rest = token;
        return nullptr;
    }
    rest = token + strcspn(token, delimiters);
    if (*rest != '\0') {
        *rest++ = '\0';
    }
    return token;
}
