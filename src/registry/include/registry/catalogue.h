// Message catalogues: the texts that a catalogue of the product may translate. A message without
// translation stands for itself. data/po/*.pot list every message; a test compares them with src/.
#ifndef REGISTRY_CATALOGUE_H
#define REGISTRY_CATALOGUE_H

#include <libintl.h>
#include <ntwin32/system.h>

#include <clocale>
#include <cstddef>

#include "registry/text.h"

// Texts to and from the maintenance centre, and the agent's event texts.
#define CATALOGUE_VELOX "velox"
#define CATALOGUE_REPORT_TABLE "reprttbl"
// Fixed: a product root of the environment does not move it.
#define CATALOGUE_FOLDER "/opt/xev/kestro_sa/data/mo"

// Marks a literal that is looked up later, in another place.
#define CATALOGUE_MESSAGE(szMessage) szMessage

// Switches the process to the system's language and makes lpszDomain the domain of later look-ups.
// lpszPreset is the language name that counts when the system gives none.
inline void UseCatalogue(const char *lpszPreset, const char *lpszDomain) noexcept {
    char szLanguage[128] = {};
    if (CopyText(szLanguage, lpszPreset)) {
        (void)GetSystemDefaultLANG(szLanguage, sizeof szLanguage);
    }
    (void)std::setlocale(LC_ALL, szLanguage);
    (void)bindtextdomain(lpszDomain, CATALOGUE_FOLDER);
    (void)textdomain(lpszDomain);
}

// The translation of a message in the domain that was made current last. The text is the
// catalogue's (or the message itself): it is neither changed nor released.
inline const char *CatalogueText(const char *lpszMessage) noexcept {
    return dcgettext(nullptr, lpszMessage, LC_MESSAGES);
}

#endif  // REGISTRY_CATALOGUE_H
