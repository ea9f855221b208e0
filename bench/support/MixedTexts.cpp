#include "support/MixedTexts.h"

#include "base/Text.h"

#include <random>

namespace korvex::bench {

namespace {

struct Language {
    int percent;
    std::vector<std::string> words;
    std::string separator = " ";
};

const std::vector<Language>& languages() {
    static const std::vector<Language> all{
        {50,
         {"the",     "meeting", "about",    "Milk",   "weekend", "invoice", "call",   "back",
          "and",     "garden",  "remember", "Résumé", "train",   "ticket",  "before", "Monday",
          "project", "with",    "review",   "draft",  "café",    "to",      "of",     "notes",
          "kitchen", "paint",   "🎉",        "budget", "for",     "quarter", "send",   "photos"}},
        {20, {"die",      "Straße",   "und",    "Besprechung", "Größe",   "Müller",  "heute",
              "Rechnung", "für",      "Käse",   "Übung",       "der",     "Bücher",  "kaufen",
              "nächste",  "Woche",    "Termin", "Schlüssel",   "zurück",  "Wohnung", "mit",
              "Bäcker",   "Frühling", "💡",      "Garten",      "anrufen", "das",     "schön"}},
        {12,
         {"会議", "の",   "資料",   "を", "準備",   "する",        "キーボード",
          "東京", "北京", "買い物", "に", "行く",   "電話",        "ｶﾀｶﾅ",
          "明日", "。",   "写真",   "が", "ガイド", "プロジェクト"},
         ""},
        {12,
         {"Купить", "молоко", "и", "хлеб", "Ёлка", "встреча", "завтра", "позвонить", "маме",
          "отчёт", "в", "понедельник", "не", "забыть", "билеты", "на", "поезд", "Йогурт"}},
        {6,
         {"اجتماع", "مع", "مُحَمَّد", "غداً", "شراء", "الحليب", "و", "الخبز", "أحمد", "كتاب", "في",
          "المكتبة", "مشروع", "جديد", "📌", "إلى", "البيت"}},
    };
    return all;
}

} // namespace

std::vector<std::string> mixedTexts(std::size_t count) {
    std::mt19937 random(1);
    const auto below = [&](std::size_t bound) {
        return static_cast<std::size_t>(random()) % bound;
    };
    std::vector<std::string> texts;
    texts.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        auto percent = static_cast<int>(below(100));
        auto language = languages().begin();
        while (percent >= language->percent) {
            percent -= language->percent;
            ++language;
        }
        const auto length = 20 + below(560);
        auto text = std::to_string(i);
        while (text.size() < length) {
            text += language->separator + language->words[below(language->words.size())];
        }
        texts.push_back(std::move(text));
    }
    return texts;
}

std::vector<std::string> typedQueries() {
    std::vector<std::string> queries;
    for (const std::string text :
         {"weekend", "resume", "invoice 4711", "milk before monday", "strasse", "Übung",
          "schlüssel", "キーボード", "東京", "ガイド", "молоко", "Елка", "понедельник билеты",
          "محمد", "كتاب", "🎉", "zzyzx", "e", "project review 99"}) {
        const auto characters = base::characterCount(text, text.size());
        for (std::size_t typed = 1; typed <= characters; ++typed) {
            queries.emplace_back(base::characterPrefix(text, typed));
        }
    }
    return queries;
}

} // namespace korvex::bench
