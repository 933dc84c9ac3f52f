#include "hostile/HostileNames.h"

namespace venlo::test
{

namespace
{
void addPaths(std::vector<HostileName> &names)
{
    names.push_back({"parent", "..", true});
    names.push_back({"itself", ".", true});
    names.push_back({"upwards", "../evil.txt", true});
    names.push_back({"far upwards", "../../../../../../../../tmp/venlo-evil.txt", true});
    names.push_back({"absolute", "/tmp/venlo-evil.txt", true});
    names.push_back({"below", "inner/evil.txt", true});
    names.push_back({"slash at the end", "evil/", true});
    names.push_back({"slash alone", "/", true});
    names.push_back({"slashes", "//evil//", true});
    names.push_back({"backslashes upwards", "..\\evil.txt"});
    names.push_back({"a backslash", "evil\\x.txt"});
    names.push_back({"backslash at the end", "evil\\"});
    names.push_back({"a UNC path", "\\\\evil\\share\\x"});
    names.push_back({"a drive", "C:evil.txt"});
    names.push_back({"a drive's root", "C:\\evil.txt"});
    names.push_back({"a stream", "evil.txt::$DATA"});
    names.push_back({"a device", "NUL.evil"});
    names.push_back({"dots", "...evil..."});
    names.push_back({"three dots", "..."});
    names.push_back({"a home", "~evil"});
    names.push_back({"an option", "-evil -rf"});
    names.push_back({"a pipe", "|evil"});
    names.push_back({"a command", "$(touch evil);`touch evil`&&evil"});
    names.push_back({"a starter", "evil.desktop"});
    names.push_back({"an address", "ftp:evil"});
    names.push_back({"overlong slash", "\xc0\xaf..\xc0\xaf"
                                       "evil"});
    names.push_back({"overlong dots", "\xc0\xae\xc0\xae"});
    names.push_back({"full-width dots and slash", "．．／evil"});
    names.push_back({"a fraction slash", "..⁄evil"});
}

void addCharacters(std::vector<HostileName> &names)
{
    names.push_back({"NUL", QByteArray("evil\0.txt", 9), true});
    names.push_back({"CR", "evil\rDELE keep.txt", true});
    names.push_back({"bell", "evil\a.txt"});
    names.push_back({"escape", "evil\x1b]0;owned\a\x1b[2J"});
    names.push_back({"tab", "keep.txt\tevil"});
    names.push_back({"tab in front", "\tevil"});
    names.push_back({"backspace", "evil\b\b\b\bgood"});
    names.push_back({"delete", "evil\x7f"});
    names.push_back({"telnet", "evil\xff\xf4"});
    names.push_back({"C1 controls", "evil\xc2\x9b"
                                    "31m"});
    names.push_back({"right to left", "evil\xe2\x80\xae"
                                      "fdp.exe"});
    names.push_back({"isolates", "\xe2\x81\xa6"
                                 "evil\xe2\x81\xa9"});
    names.push_back({"nothing to see", "evil\xe2\x80\x8b\xe2\x80\x8d\xef\xbb\xbf"});
    names.push_back({"line separator", "evil\xe2\x80\xa8x"});
    names.push_back({"not UTF-8", "evil\xfe\xed\xfa\xce"});
    names.push_back({"half a surrogate", "evil\xed\xa0\x80"});
    names.push_back({"a mark", "\xef\xbb\xbf"
                               "evil"});
    names.push_back(
        {"combining characters", QByteArray("evil") + QByteArray("\xcc\x81").repeated(60)});
    names.push_back({"a blank in front", " evil"});
    names.push_back({"a blank at the end", "evil "});
    names.push_back({"only blanks", "   "});
    names.push_back({"255 bytes", "evil" + QByteArray(251, 'x')});
    names.push_back({"256 bytes", "evil" + QByteArray(252, 'x')});
    names.push_back({"4 KiB", "evil" + QByteArray(4092, 'x')});
    names.push_back({"60 KiB", "evil" + QByteArray(60'000, 'x')});
    names.push_back({"64 KiB", "evil" + QByteArray(65'536, 'x')});
}

void addStatements(std::vector<HostileName> &names)
{
    names.push_back({"a quote", "evil'"});
    names.push_back({"only a quote", "'"});
    names.push_back({"two quotes", "''"});
    names.push_back({"a quote between", "it's evil"});
    names.push_back({"another statement", "evil'; DROP TABLE msSite; --"});
    names.push_back({"another condition", "evil' Or '1'='1"});
    names.push_back({"another table", "evil') Union Select * From msSite --"});
    names.push_back({"other values", "evil', 'x', #26/01/01#, 1) --"});
    names.push_back({"a full-width quote", "evil＇ Or ＇1＇=＇1"});
    names.push_back({"double quotes", "\"evil\""});
    names.push_back({"brackets", "[evil]"});
    names.push_back({"an open bracket", "[evil"});
    names.push_back({"a closing bracket", "evil]"});
    names.push_back({"a star", "*"});
    names.push_back({"a star at the end", "evil*"});
    names.push_back({"a question mark", "evil?"});
    names.push_back({"question marks", "???evil???"});
    names.push_back({"a number sign", "#evil#"});
    names.push_back({"percent and underline", "%evil_"});
    names.push_back({"a comment", "evil--"});
    names.push_back({"another comment", "evil/*", true});
    names.push_back({"placeholders", "evil%1%2%n"});
    names.push_back({"markup", "<b>evil<img src=x>"});
}
} // namespace

std::vector<HostileName> hostileNames()
{
    std::vector<HostileName> names;
    addPaths(names);
    addCharacters(names);
    addStatements(names);
    return names;
}

} // namespace venlo::test
