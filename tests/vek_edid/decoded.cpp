#include "decoded.h"

#include <algorithm>
#include <iterator>
#include <regex>
#include <sstream>

namespace
{

/// A line of text and the fact that it states: a name, and a value in which $1 is the first matched part.
struct Rule {
    const char* line;
    const char* name;
    const char* value;
};

struct CompiledRule {
    std::regex line;
    std::string name;
    std::string value;
};

std::vector<CompiledRule> compiled(const std::vector<Rule>& rules)
{
    std::vector<CompiledRule> result;
    for (const Rule& rule : rules) {
        result.push_back({std::regex(rule.line), rule.name, rule.value});
    }
    return result;
}

const std::vector<CompiledRule>& referenceRules()
{
    static const std::vector<CompiledRule> kRules = compiled({
        {R"(EDID Structure Version & Revision: (.*))", "version", "$1"},
        {R"(Manufacturer: (.*))", "manufacturer", "$1"},
        {R"(Model: (\d+))", "product", "$1"},
        {R"(Serial Number: (\d+))", "serial", "$1"},
        {R"(Made in: week (\d+) of (\d+))", "date", "week $1, $2"},
        {R"(Made in: (\d+))", "date", "$1"},
        {R"(Model year: (\d+))", "date", "model $1"},
        {R"(Maximum image size: (\d+) cm x (\d+) cm)", "size", "$1x$2"},
        {R"(Aspect ratio: (\S+ \(.*\)))", "size", "$1"},
        {R"(Gamma: (.*))", "gamma", "$1"},
        {R"(Bits per primary color channel: (\d+))", "depth", "$1"},
        {R"((HDMI-a|HDMI-b|DVI|MDDI|DisplayPort) interface)", "interface", "$1"},
        {R"((Analog|Digital) display)", "input", "$1"},
        {R"((Red|Green|Blue|White)\s*: ([\d.]+), ([\d.]+))", "chromaticity", "$2"},
        {R"((Red|Green|Blue|White)\s*: ([\d.]+), ([\d.]+))", "chromaticity", "$3"},
        {R"(Display Product Name: (.*))", "name", "$1"},
        {R"(Display Product Serial Number: (.*))", "serial text", "$1"},
        {R"(Alphanumeric Data String: (.*))", "text", "$1"},
        {R"(Monitor ranges \(.*\): (\d+-\d+) Hz V, (\d+-\d+) kHz H.*)", "vertical range", "$1"},
        {R"(Monitor ranges \(.*\): (\d+-\d+) Hz V, (\d+-\d+) kHz H.*)", "horizontal range", "$2"},
        {R"(Monitor ranges \(.*\):.*max dotclock (\d+) MHz)", "maximum clock", "$1"},
        {R"(Real max dotclock: (.*) MHz)", "exact clock", "$1"},
        {R"(Max active pixels per line: (\d+))", "maximum width", "$1"},
        {R"(Start frequency: (\d+) kHz)", "GTF start", "$1"},
        {R"(C: (.*)%)", "GTF C", "$1"},
        {R"(M: (.*)%/kHz)", "GTF M", "$1"},
        {R"(K: (.*))", "GTF K", "$1"},
        {R"(J: (.*)%)", "GTF J", "$1"},
        {R"((Red|Green|Blue) (a[23])\s*: (.*))", "color management", "$1 $2 $3"},
        {R"(Index: (\d+) White: (\S+), (\S+) Gamma: .*)", "color point", "$1"},
        {R"(Index: \d+ White: (\S+), (\S+) Gamma: .*)", "chromaticity", "$1"},
        {R"(Index: \d+ White: (\S+), (\S+) Gamma: .*)", "chromaticity", "$2"},
        {R"(Extension blocks: (\d+))", "extensions", "$1"},
        {R"(Checksum: (0x..))", "checksum", "$1 valid"},
        {R"(Checksum: (0x..) \(should be (0x..)\))", "checksum", "$1 should be $2"},
        {R"((?:Max channels|MPEG-H 3D Audio Level): (?:Level )?(\d+))", "channels", "$1"},
        {R"(Supported sample rates \(kHz\): (.*))", "sorted rates", "$1"},
        {R"(Supported sample sizes \(bits\): (.*))", "sorted sizes", "$1"},
        {R"(Maximum bit rate: (\d+) kb/s)", "bit rate", "$1"},
        {R"(Profile: (\d+))", "profile", "$1"},
        {R"((Linear PCM|AC-3|AAC LC|DTS|ATRAC|One Bit Audio|DTS-HD|MAT \(MLP\)|DST|WMA Pro|MPEG-4.*|DRA):)",
         "audio format", "$1"},
        {R"((MPEG-H 3D Audio|AC-4|L-PCM 3D Audio):)", "audio format", "$1"},
        {R"(Enhanced AC-3 \(DD\+\):)", "audio format", "Enhanced AC-3"},
        {R"(MPEG 1 \(Layers 1 & 2\):)", "audio format", "MPEG 1 (layers 1 and 2)"},
        {R"(MPEG 1 Layer 3 \(MP3\):)", "audio format", "MPEG 1 layer 3 (MP3)"},
        {R"(MPEG2 \(multichannel\):)", "audio format", "MPEG 2"},
        {R"((HE AAC|HE AAC v2|MPEG Surround) \(Obsolete\):)", "audio format", "$1 (obsolete)"},
        {R"(([A-Z][A-Za-z0-9]*(?:/[A-Z][A-Za-z0-9]*)?) - .*)", "speaker", "$1"},
        {R"(.*OUI ([0-9A-F]{2}-[0-9A-F]{2}-[0-9A-F]{2}).*)", "OUI", "$1"},
        {R"(Source physical address: (.*))", "physical address", "$1"},
        {R"(Maximum TMDS clock: (.*))", "TMDS clock", "$1"},
        {R"(Maximum TMDS Character Rate: (.*))", "TMDS rate", "$1"},
        {R"(Max Fixed Rate Link: (.*))", "fixed rate link", "$1"},
        {R"(DSC Max Fixed Rate Link: (.*))", "DSC fixed rate link", "$1"},
        {R"(VRRmin: (.*))", "VRR minimum", "$1"},
        {R"(VRRmax: (.*))", "VRR maximum", "$1"},
        {R"(DC_(30|36|48)bit)", "deep color", "$1"},
        {R"(Supports (10|12|16)-bits/component Deep Color 4:2:0 Pixel Encoding)", "deep color 4:2:0", "$1"},
        {R"(SCDC Present)", "SCDC", "present"},
        {R"(Desired content max luminance: \d+ \((.*) cd/m\^2\))", "luminance", "$1"},
        {R"(Desired content max frame-average luminance: \d+ \((.*) cd/m\^2\))", "average luminance", "$1"},
        {R"(Desired content min luminance: \d+ \((.*) cd/m\^2\))", "minimum luminance", "$1"},
        {R"((xvYCC\d+|sYCC601|op(?:YCC601|RGB)|BT2020\w+|sRGB|ICtCp|ST2113RGB))", "colorimetry", "$1"},
        {R"(Native detailed modes: (\d+))", "native timings", "$1"},
        {R"((DTD|VTDB)\s+(\d+)(?:: Invalid)?)", "reference", "$1 $2"},
        {R"(Num horizontal tiles: (\d+) Num vertical tiles: (\d+))", "tiles", "$1x$2"},
        {R"(Tile location: (.*))", "tile location", "$1"},
        {R"(Tile resolution: (.*))", "tile resolution", "$1"},
        {R"(Product Code: (\d+))", "product code", "$1"},
        {R"(Image size: (.*))", "image size", "$1"},
        {R"(Image Size: (.*)x(.*) mm)", "image size", "$1 mm x $2 mm"},
        {R"(Display native pixel format: (.*))", "native format", "$1"},
        {R"(Container ID: (.*))", "container", "$1"},
        {R"(Block\s+(\d+), .*:)", "block", "$1"},
    });
    return kRules;
}

const std::vector<CompiledRule>& ourRules()
{
    static const std::vector<CompiledRule> kRules = compiled({
        {R"(EDID version: (.*))", "version", "$1"},
        {R"(Manufacturer: (.*))", "manufacturer", "$1"},
        {R"(Product code: (\d+) \(.*\))", "product", "$1"},
        {R"(Serial number: (\d+))", "serial", "$1"},
        {R"(Week of manufacture: (\d+))", "week", "$1"},
        {R"(Year of manufacture: (\d+))", "date", "$1"},
        {R"(Model year: (\d+))", "date", "model $1"},
        {R"(Image size: (\d+) cm x (\d+) cm)", "size", "$1x$2"},
        {R"(Aspect ratio: (\S+ \(.*\)))", "size", "$1"},
        {R"(Gamma: ([\d.]+))", "gamma", "$1"},
        {R"(Bits per primary color channel: (\d+))", "depth", "$1"},
        {R"(Interface: (HDMI-a|HDMI-b|DVI|MDDI|DisplayPort))", "interface", "$1"},
        {R"(Video input: analog)", "input", "Analog"},
        {R"(Video input: digital)", "input", "Digital"},
        {R"((Red|Green|Blue|White): ([\d.]+), ([\d.]+))", "chromaticity", "$2"},
        {R"((Red|Green|Blue|White): ([\d.]+), ([\d.]+))", "chromaticity", "$3"},
        {R"(Display Product Name: (.*))", "name", "$1"},
        {R"(Display Product Serial Number: (.*))", "serial text", "$1"},
        {R"(Alphanumeric Data String: (.*))", "text", "$1"},
        {R"(Vertical rate: (.*) Hz)", "vertical range", "$1"},
        {R"(Horizontal rate: (.*) kHz)", "horizontal range", "$1"},
        {R"(Maximum pixel clock: (.*) MHz)", "maximum clock", "$1"},
        {R"(Maximum pixel clock, exact: (.*) MHz)", "exact clock", "$1"},
        {R"(Maximum active pixels per line: (\d+))", "maximum width", "$1"},
        {R"(Start frequency: (\d+) kHz)", "GTF start", "$1"},
        {R"(C: (.*) %)", "GTF C", "$1"},
        {R"(M: (.*) %/kHz)", "GTF M", "$1"},
        {R"(K: (.*))", "GTF K", "$1"},
        {R"(J: (.*) %)", "GTF J", "$1"},
        {R"((Red|Green|Blue) (a[23]): (.*))", "color management", "$1 $2 $3"},
        {R"(White point (\d+): .*)", "color point", "$1"},
        {R"(White point \d+: (\S+), (\S+))", "chromaticity", "$1"},
        {R"(White point \d+: (\S+), (\S+))", "chromaticity", "$2"},
        {R"(Extension blocks: ([1-9]\d*))", "extensions", "$1"},
        {R"((?:Section checksum|Checksum): (0x..) \(valid\))", "checksum", "$1 valid"},
        {R"((?:Section checksum|Checksum): (0x..) \(invalid, should be (0x..)\))", "checksum", "$1 should be $2"},
        {R"((?:Maximum channels|MPEG-H 3D Audio level): (\d+))", "channels", "$1"},
        {R"(Sample rates \(kHz\): (.*))", "sorted rates", "$1"},
        {R"(Sample sizes \(bits\): (.*))", "sorted sizes", "$1"},
        {R"(Maximum bit rate: (\d+) kb/s)", "bit rate", "$1"},
        {R"(Profile: (\d+))", "profile", "$1"},
        {R"((Linear PCM|AC-3|AAC LC|DTS|ATRAC|One Bit Audio|DTS-HD|MAT \(MLP\)|DST|WMA Pro|MPEG-4.*|DRA):)",
         "audio format", "$1"},
        {R"((MPEG-H 3D Audio|AC-4|L-PCM 3D Audio|Enhanced AC-3|MPEG 1 .*|MPEG 2):)", "audio format", "$1"},
        {R"((.* \(obsolete\)):)", "audio format", "$1"},
        {R"((?!DPMS|Sync|EOTF|CVT|DMT|VIC)([A-Z][A-Za-z0-9]{0,3}(?:/[A-Z][A-Za-z0-9]*)?|LFE[12]|[A-Z]\w+/[A-Z]\w+): [a-z].*)",
         "speaker", "$1"},
        {R"(.*OUI ([0-9A-F]{2}-[0-9A-F]{2}-[0-9A-F]{2}).*)", "OUI", "$1"},
        {R"(Source physical address: (.*))", "physical address", "$1"},
        {R"(Maximum TMDS clock: (.*))", "TMDS clock", "$1"},
        {R"(Maximum TMDS character rate: (.*))", "TMDS rate", "$1"},
        {R"(Maximum fixed rate link: ((?!not).*))", "fixed rate link", "$1"},
        {R"(DSC fixed rate link: ((?!not).*))", "DSC fixed rate link", "$1"},
        {R"(VRR minimum: (.*))", "VRR minimum", "$1"},
        {R"(VRR maximum: (.*))", "VRR maximum", "$1"},
        {R"(Deep color: (\d+) bits)", "deep color", "$1"},
        {R"(Deep color 4:2:0: (\d+) bits per component)", "deep color 4:2:0", "$1"},
        {R"(SCDC present)", "SCDC", "present"},
        {R"(Maximum luminance: (.*) cd/m2)", "luminance", "$1"},
        {R"(Maximum frame-average luminance: (.*) cd/m2)", "average luminance", "$1"},
        {R"(Minimum luminance: (.*) cd/m2)", "minimum luminance", "$1"},
        {R"((xvYCC\d+|sYCC601|op(?:YCC601|RGB)|BT2020\w+|sRGB|ICtCp|ST2113RGB))", "colorimetry", "$1"},
        {R"(Native detailed timings: (\d+))", "native timings", "$1"},
        {R"((DTD|VTDB) (\d+))", "reference", "$1 $2"},
        {R"(Tiles: (\d+) x (\d+))", "tiles", "$1x$2"},
        {R"(Tile location: (.*))", "tile location", "$1"},
        {R"(Tile resolution: (.*))", "tile resolution", "$1"},
        {R"(Product code: (\d+))", "product code", "$1"},
        {R"(Image size: (\d+\.\d mm x \d+\.\d mm))", "image size", "$1"},
        {R"(Native format: (.*))", "native format", "$1"},
        {R"(Container id: (.*))", "container", "$1"},
        {R"(Block (\d+), .*:)", "block", "$1"},
    });
    return kRules;
}

/// Puts the words of a list in order: the decoders list bits from different ends.
std::string sortedWords(const std::string& text)
{
    std::istringstream in(text);
    std::vector<std::string> words{std::istream_iterator<std::string>(in), {}};
    std::sort(words.begin(), words.end());
    std::string result;
    for (const std::string& word : words) {
        result += word + ' ';
    }
    return result;
}

void applyRules(const std::vector<CompiledRule>& rules, const std::string& line, Decoded& decoded)
{
    std::smatch match;
    for (const CompiledRule& rule : rules) {
        if (std::regex_match(line, match, rule.line)) {
            const std::string value = match.format(rule.value);
            decoded.facts[rule.name].push_back(rule.name.starts_with("sorted") ? sortedWords(value) : value);
        }
    }
}

/// A name that both decoders give in one form, empty for others.
std::string commonName(const std::string& name)
{
    static const std::regex kCommon(R"(DMT 0x..|(?:VIC|HDMI VIC|DTD|VTDB) \d+|IBM|Apple|GTF|CVT)");
    const std::string single = std::regex_replace(name, std::regex(" +"), " ");
    return std::regex_match(single, kCommon) && single != "CVT" ? single : "";
}

bool contains(const std::string& text, const char* part)
{
    return text.find(part) != std::string::npos;
}

bool takeTiming(const std::string& line, Decoded& decoded)
{
    static const std::regex kTiming(
        R"((.*?) *: +(\d+)x(\d+)(i?) +([\d.]+) Hz +(\d+:\d+) +([\d.]+) kHz +([\d.]+) MHz(.*))");
    static const std::regex kSize(R"((\d+) mm x (\d+) mm)");
    std::smatch match;
    if (!std::regex_match(line, match, kTiming)) {
        return false;
    }
    DecodedTiming timing;
    timing.name = commonName(match.str(1));
    timing.width = std::stoi(match.str(2));
    timing.height = std::stoi(match.str(3));
    timing.interlaced = !match.str(4).empty();
    timing.refreshHz = std::stod(match.str(5));
    timing.ratio = match.str(6);
    timing.horizontalKhz = std::stod(match.str(7));
    timing.clockMhz = std::stod(match.str(8));
    const std::string note = match.str(9);
    timing.reducedBlanking = contains(note, "RB") || contains(note, "reduced blanking");
    timing.native = contains(note, "native");
    timing.preferred = contains(note, "preferred");
    if (std::regex_search(note, match, kSize)) {
        timing.imageSize = match.format("$1x$2");
    }
    decoded.timings.push_back(timing);
    return true;
}

void takeReferenceParts(const std::string& line, DecodedTiming& timing)
{
    static const std::regex kParts(R"(([HV])front +(-?\d+) .sync +(\d+) .back +(-?\d+)(?: .pol ([PN]))?(.*))");
    static const std::regex kBorder(R"(.border (\d+))");
    std::smatch match;
    if (!std::regex_match(line, match, kParts)) {
        return;
    }
    DecodedAxis axis{std::stoi(match.str(2)), std::stoi(match.str(3)), std::stoi(match.str(4)), 0,
                     match.str(5).empty() ? '\0' : match.str(5).front()};
    const bool horizontal = match.str(1) == "H";
    const std::string rest = match.str(6);
    if (std::regex_search(rest, match, kBorder)) {
        axis.border = std::stoi(match.str(1));
    }
    (horizontal ? timing.horizontal : timing.vertical) = axis;
}

void takeOurParts(const std::string& line, DecodedTiming& timing)
{
    static const std::regex kParts(
        R"((Horizontal|Vertical|Vertical of a field): active \d+, front porch (-?\d+), sync (\d+), back porch (-?\d+), )"
        R"(border (\d+), total -?\d+(?:, (positive|negative) sync)?)");
    static const std::regex kSize(R"(Image size: (\d+) mm x (\d+) mm)");
    std::smatch match;
    if (std::regex_match(line, match, kSize)) {
        timing.imageSize = match.format("$1x$2");
    }
    if (!std::regex_match(line, match, kParts)) {
        return;
    }
    const char polarity = match.str(6).empty() ? '\0' : match.str(6) == "positive" ? 'P' : 'N';
    const DecodedAxis axis{std::stoi(match.str(2)), std::stoi(match.str(3)), std::stoi(match.str(4)),
                           std::stoi(match.str(5)), polarity};
    (match.str(1) == "Horizontal" ? timing.horizontal : timing.vertical) = axis;
}

std::string trimmed(const std::string& line)
{
    const std::size_t start = line.find_first_not_of(' ');
    return start == std::string::npos ? "" : line.substr(start);
}

template <typename TakeParts>
Decoded decode(const std::string& text, const std::vector<CompiledRule>& rules, const char* end,
               const TakeParts& takeParts)
{
    Decoded decoded;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line) && !line.starts_with(end);) {
        line = trimmed(line);
        if (takeTiming(line, decoded)) {
            continue;
        }
        if (!decoded.timings.empty()) {
            takeParts(line, decoded.timings.back());
        }
        applyRules(rules, line, decoded);
    }
    return decoded;
}

std::ostream& operator<<(std::ostream& out, const std::optional<DecodedAxis>& axis)
{
    if (!axis) {
        return out << "-";
    }
    return out << axis->front << '/' << axis->sync << '/' << axis->back << '/' << axis->border
               << (axis->polarity == 0 ? '?' : axis->polarity);
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const DecodedTiming& timing)
{
    return out << '"' << timing.name << "\" " << timing.width << 'x' << timing.height
               << (timing.interlaced ? "i " : " ") << timing.refreshHz << " Hz " << timing.ratio << ' '
               << timing.horizontalKhz << " kHz " << timing.clockMhz << " MHz" << (timing.reducedBlanking ? " RB" : "")
               << (timing.native ? " native" : "") << (timing.preferred ? " preferred" : "") << " [" << timing.imageSize
               << "] H " << timing.horizontal << " V " << timing.vertical;
}

Decoded decodedByReference(const std::string& text)
{
    return decode(text, referenceRules(), "edid-decode SHA", takeReferenceParts);
}

Decoded decodedByUs(const std::string& text)
{
    Decoded decoded = decode(text, ourRules(), "Errors and oddities", takeOurParts);
    const auto week = decoded.facts.find("week");
    if (week != decoded.facts.end()) {
        std::string& date = decoded.facts["date"].at(0);
        date = "week " + week->second.at(0) + ", " + date;
        decoded.facts.erase(week);
    }
    return decoded;
}
