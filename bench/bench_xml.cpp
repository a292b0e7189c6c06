// The reader against pugixml (which builds a tree), expat (with namespaces) and libxml2's text
// reader. Each visits every element, attribute and text of the same documents in memory, and must
// see the same.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>
#include <expat.h>
#include <libxml/xmlreader.h>
#include <pugixml.hpp>

#include "qnxml/reader.h"
#include "qnxml/stream_tokenizer.h"

namespace {

/// What a visit of a whole document adds up to.
struct Tally {
    std::size_t elements = 0;
    std::size_t attributes = 0;
    std::size_t nameBytes = 0; ///< of elements and attributes, local names
    std::size_t valueBytes = 0;
    std::size_t textBytes = 0;

    friend bool operator==(const Tally&, const Tally&) = default;
};

using Parse = Tally (*)(const std::string& document);

class MemoryStream final : public qncore::RefCounted<qncore::AtomicRefCount>,
                           public qncore::IReadStream {
  public:
    explicit MemoryStream(const std::string& text)
        : text_(text) {}

    std::uint64_t read(void* buffer, std::uint64_t count) override {
        const std::size_t size = std::min<std::size_t>(count, text_.size() - position_);
        std::memcpy(buffer, text_.data() + position_, size);
        position_ += size;
        return size;
    }
    std::uint64_t skip(std::uint64_t) override { return 0; }
    std::uint64_t available() override { return text_.size() - position_; }

  private:
    const std::string& text_;
    std::size_t position_ = 0;
};

Tally parse_reader(const std::string& document) {
    using qnxml::XmlNodeType;
    qnxml::XmlStreamTokenizer tokenizer(
        {}, 1, 4096, qnxml::XmlStreamTokenizer::Stream(new MemoryStream(document)));
    qnxml::XmlReader reader(&tokenizer);
    Tally tally;
    while (reader.read_next()) {
        if (reader.node_type() == XmlNodeType::Element) {
            const auto element = reader.current_element();
            ++tally.elements;
            tally.nameBytes += element->local_name().size();
            for (const qnxml::XmlAttribute& attribute : element->attributes()) {
                if (attribute.prefix() == "xmlns") {
                    continue;
                }
                ++tally.attributes;
                tally.nameBytes += attribute.local_name().size();
                tally.valueBytes += attribute.value().size();
            }
        } else if (reader.node_type() == XmlNodeType::Text) {
            tally.textBytes += reader.value().size();
        }
    }
    return tally;
}

/// The length of what follows the separator in a name of expat's.
std::size_t local_length(const char* name) {
    const char* const separator = std::strrchr(name, '|');
    return std::strlen(separator != nullptr ? separator + 1 : name);
}

Tally parse_expat(const std::string& document) {
    Tally tally;
    const XML_Parser parser = XML_ParserCreateNS(nullptr, '|');
    XML_SetUserData(parser, &tally);
    XML_SetElementHandler(
        parser,
        [](void* data, const XML_Char* name, const XML_Char** attributes) {
            auto& it = *static_cast<Tally*>(data);
            ++it.elements;
            it.nameBytes += local_length(name);
            for (; *attributes != nullptr; attributes += 2) {
                ++it.attributes;
                it.nameBytes += local_length(attributes[0]);
                it.valueBytes += std::strlen(attributes[1]);
            }
        },
        [](void*, const XML_Char*) {});
    XML_SetCharacterDataHandler(parser, [](void* data, const XML_Char*, int length) {
        static_cast<Tally*>(data)->textBytes += static_cast<std::size_t>(length);
    });
    if (XML_Parse(parser, document.data(), static_cast<int>(document.size()), 1) != XML_STATUS_OK) {
        std::fprintf(stderr, "expat: %s\n", XML_ErrorString(XML_GetErrorCode(parser)));
        std::abort();
    }
    XML_ParserFree(parser);
    return tally;
}

std::size_t length_of(const xmlChar* text) {
    return static_cast<std::size_t>(xmlStrlen(text));
}

Tally parse_libxml2(const std::string& document) {
    Tally tally;
    const xmlTextReaderPtr reader = xmlReaderForMemory(
        document.data(), static_cast<int>(document.size()), nullptr, nullptr, XML_PARSE_HUGE);
    while (xmlTextReaderRead(reader) == 1) {
        const int type = xmlTextReaderNodeType(reader);
        if (type == XML_READER_TYPE_ELEMENT) {
            ++tally.elements;
            tally.nameBytes += length_of(xmlTextReaderConstLocalName(reader));
            while (xmlTextReaderMoveToNextAttribute(reader) == 1) {
                if (xmlTextReaderIsNamespaceDecl(reader) == 1) {
                    continue;
                }
                ++tally.attributes;
                tally.nameBytes += length_of(xmlTextReaderConstLocalName(reader));
                tally.valueBytes += length_of(xmlTextReaderConstValue(reader));
            }
        } else if (type == XML_READER_TYPE_TEXT) {
            tally.textBytes += length_of(xmlTextReaderConstValue(reader));
        }
    }
    xmlFreeTextReader(reader);
    return tally;
}

/// Adds up the tree without recursion, because it may be deep.
Tally parse_pugixml(const std::string& document) {
    pugi::xml_document tree;
    tree.load_buffer(document.data(), document.size());
    const auto local = [](const char* name) {
        const char* const colon = std::strchr(name, ':');
        return std::strlen(colon != nullptr ? colon + 1 : name);
    };
    Tally tally;
    pugi::xml_node node = tree.first_child();
    while (node) {
        if (node.type() == pugi::node_element) {
            ++tally.elements;
            tally.nameBytes += local(node.name());
            for (const pugi::xml_attribute attribute : node.attributes()) {
                if (std::strncmp(attribute.name(), "xmlns:", 6) == 0) {
                    continue;
                }
                ++tally.attributes;
                tally.nameBytes += local(attribute.name());
                tally.valueBytes += std::strlen(attribute.value());
            }
        } else {
            tally.textBytes += std::strlen(node.value());
        }
        if (node.first_child()) {
            node = node.first_child();
            continue;
        }
        while (node && !node.next_sibling()) {
            node = node.parent();
        }
        node = node.next_sibling();
    }
    return tally;
}

/// One line as the store writes it.
std::string store_document(std::size_t bytes) {
    std::string text = "<ORVACertificates><Notifiers>";
    for (int server = 1; text.size() < bytes; ++server) {
        const std::string name = "SRV" + std::to_string(server);
        const std::string path = "C:\\Keys\\srv" + std::to_string(server);
        text += "<Notifier Name=\"" + name + "\"><SubsystemsServerCertificate><PublicKeyPath>" +
                path + ".pub</PublicKeyPath><PrivateKeyPath>" + path +
                ".key</PrivateKeyPath><CertificatePath>" + path +
                ".crt</CertificatePath><Password></Password><TrustedCertificatePath>" + path +
                "&amp;ca.crt</TrustedCertificatePath></SubsystemsServerCertificate></Notifier>";
    }
    return text + "</Notifiers><SIPDevices></SIPDevices><MediaRetrieval></MediaRetrieval>"
                  "</ORVACertificates>";
}

/// Towers of nested elements with many attributes, some of them in a namespace.
std::string nested_document(std::size_t bytes) {
    constexpr int depth = 200;
    std::string text = "<root xmlns:p=\"urn:example:p\" xmlns:q=\"urn:example:q\">";
    while (text.size() < bytes) {
        for (int level = 0; level < depth; ++level) {
            text += "<p:level number=\"" + std::to_string(level) + "\" id=\"identifier-" +
                    std::to_string(text.size()) +
                    "\" p:kind=\"measured\" q:unit=\"millimetres &amp; more\" first=\"1\" "
                    "second=\"two words\" third='a \"quoted\" text'>";
        }
        text += "x";
        for (int level = 0; level < depth; ++level) {
            text += "</p:level>";
        }
    }
    return text + "</root>";
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

struct Parser {
    const char* name;
    Parse parse;
};

constexpr Parser parsers[] = {{"reader", parse_reader},
                              {"pugixml", parse_pugixml},
                              {"expat", parse_expat},
                              {"libxml2", parse_libxml2}};

/// The milliseconds of processor time of all parsers in turn, `rounds` times.
std::vector<std::vector<double>> measure(const std::string& document, int rounds) {
    std::vector<std::vector<double>> times(std::size(parsers));
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < std::size(parsers); ++i) {
            const std::clock_t start = std::clock();
            benchmark::DoNotOptimize(parsers[i].parse(document));
            times[i].push_back(1e3 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
        }
    }
    return times;
}

/// The median of the rounds' quotients.
double ratio(const std::vector<double>& ours, const std::vector<double>& theirs) {
    std::vector<double> ratios(ours.size());
    std::transform(ours.begin(), ours.end(), theirs.begin(), ratios.begin(), std::divides<>());
    return median(std::move(ratios));
}

} // namespace

int main() {
    constexpr std::size_t size = 25'000'000;
    constexpr int rounds = 15;
    const std::pair<const char*, std::string> documents[] = {{"store", store_document(size)},
                                                             {"nested", nested_document(size)}};
    std::printf("%-8s%-10s%10s%16s\n", "", "", "ms", "reader's time by");
    for (const auto& [documentName, document] : documents) {
        const Tally expected = parse_reader(document);
        for (const Parser& parser : parsers) {
            if (parser.parse(document) != expected) {
                std::fprintf(stderr, "%s sees another %s document\n", parser.name, documentName);
                return 1;
            }
        }
        const std::vector<std::vector<double>> times = measure(document, rounds);
        for (std::size_t i = 0; i < std::size(parsers); ++i) {
            std::printf("%-8s%-10s%10.0f%16.2f\n", documentName, parsers[i].name, median(times[i]),
                        ratio(times[0], times[i]));
        }
    }
}
