#include "ReadProbe.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

constexpr KSScope colors[] = {{"red", 1, 0}, {"shade", 1, 5}, {"blue", 2, 0}, {nullptr, 0, 0}};
constexpr KSScope shapes[] = {{"square", 3, 0}, {"red", 4, 0}, {nullptr, 0, 0}};
constexpr KSScope anything[] = {{"size", 9, 1}, {"*", 9, 0}, {"square", 3, 0}, {nullptr, 0, 0}};

unsigned tokenOf(KSSerializerReadStream& stream, const char* name) {
    const std::unique_ptr<KSStreamElement> element(stream.getElementInfo(name));
    return element ? element->getToken() : 0;
}

TEST(KSSerializerReadStream, NothingIsCurrentAtFirst) {
    HandFedStream stream;
    stream.popHandler();
    stream.popElement();
    stream.pushScope(colors);
    EXPECT_EQ(stream.currentHandler(), nullptr);
    EXPECT_EQ(stream.currentHandlerElement(), nullptr);
    EXPECT_EQ(stream.currentElement(), nullptr);
    EXPECT_EQ(stream.getElementInfo("red"), nullptr);
    EXPECT_FALSE(stream.pushHandler(nullptr));
}

TEST(KSSerializerReadStream, ScopesAreSearchedInPushOrderAndOnlyTheTopmostHandlers) {
    std::vector<std::string> log;
    ReadProbe outer("outer", {shapes, colors}, log), inner("inner", {colors, anything}, log);
    HandFedStream stream;
    stream.pushHandler(&outer);
    EXPECT_EQ(tokenOf(stream, "red"), 4u) << "the scope that was pushed first wins";
    EXPECT_EQ(tokenOf(stream, "blue"), 2u);
    EXPECT_EQ(tokenOf(stream, "shade"), 0u) << "an attribute's entry names no element";
    EXPECT_EQ(tokenOf(stream, "Red"), 0u);
    EXPECT_EQ(tokenOf(stream, "re"), 0u);
    EXPECT_EQ(tokenOf(stream, "reds"), 0u);
    stream.pushHandler(&inner);
    EXPECT_EQ(tokenOf(stream, "red"), 1u);
    EXPECT_EQ(tokenOf(stream, "square"), 9u) << "\"*\" comes before the entry that names it";
    const std::unique_ptr<KSStreamElement> element(stream.getElementInfo("blue"));
    EXPECT_EQ(element->getScope(), colors);
    EXPECT_EQ(element->getHandler(), &inner);
    stream.popHandler();
    EXPECT_EQ(tokenOf(stream, "square"), 3u);
    stream.popHandler();
    EXPECT_EQ(tokenOf(stream, "square"), 0u);
}

TEST(KSSerializerReadStream, HandlersHearOfBeginAndEndInOrder) {
    std::vector<std::string> log;
    ReadProbe a("a", {colors}, log), b("b", {}, log), c("c", {}, log);
    a.result = false;
    HandFedStream stream;
    EXPECT_FALSE(stream.pushHandler(&a)) << "what parseBegin returned";
    EXPECT_TRUE(stream.pushHandler(&b));
    EXPECT_TRUE(stream.ignoreElement());
    EXPECT_EQ(stream.currentHandler(), &KSIgnoreElement::ignoreHandler);
    stream.pushHandler(&c);
    stream.popAllHandlers();
    EXPECT_EQ(log, (std::vector<std::string>{"a begin", "b begin", "c begin", "c end", "b end", "a end"}));
    EXPECT_EQ(stream.currentHandler(), nullptr);
}

TEST(KSSerializerReadStream, AHandlerThatParseEndPushesStays) {
    std::vector<std::string> log;
    ReadProbe first("first", {colors}, log), next("next", {shapes}, log);
    first.onEnd = [&](KSSerializerReadStream& in) { in.pushHandler(&next); };
    HandFedStream stream;
    stream.pushHandler(&first);
    stream.popHandler();
    EXPECT_EQ(stream.currentHandler(), &next);
    EXPECT_EQ(tokenOf(stream, "square"), 3u);
}

TEST(KSSerializerReadStream, NoRecordNamesADeletedElement) {
    std::vector<std::string> log;
    ReadProbe handler("h", {colors}, log);
    HandFedStream stream;
    stream.pushHandler(&handler);
    EXPECT_EQ(stream.currentHandlerElement(), nullptr);
    stream.pushElement(stream.getElementInfo("red"));
    stream.pushHandler(&handler);
    EXPECT_EQ(stream.currentHandlerElement(), stream.currentElement());
    stream.popElement();
    EXPECT_EQ(stream.currentHandlerElement(), nullptr);
    stream.popAllHandlers();
}

TEST(KSSerializerReadStream, ProcessingMarksTheElementAndTellsItsHandler) {
    std::vector<std::string> log;
    ReadProbe handler("h", {colors}, log);
    HandFedStream stream;
    stream.pushHandler(&handler);
    stream.pushElement(stream.getElementInfo("red"));
    KSStreamElement& element = *stream.currentElement();
    EXPECT_FALSE(element.isProcessed());
    handler.result = false;
    EXPECT_FALSE(stream.processElement(element));
    EXPECT_TRUE(element.isProcessed());
    KSStreamElement orphan(1, colors, nullptr);
    EXPECT_FALSE(stream.processElement(orphan));
    EXPECT_FALSE(orphan.isProcessed());
    EXPECT_EQ(log, (std::vector<std::string>{"h begin", "h(1=(null))"}));
}

TEST(KSIgnoreElement, AcceptsEverythingAndKnowsNothing) {
    HandFedStream stream;
    stream.ignoreElement();
    KSIgnoreElement& ignore = KSIgnoreElement::ignoreHandler;
    KSStreamElement element(1, colors, &ignore);
    EXPECT_EQ(tokenOf(stream, "red"), 0u);
    EXPECT_TRUE(ignore.parseBegin(stream) && ignore.parseEnd(stream) && ignore.parseElement(stream, element));
}

}  // namespace
