#pragma once

// Whom a text is for. Texts for the user are translated, those for the developer stay as written.
enum KZMBasStringMode : int { KZMBasStringModeUser = 0, KZMBasStringModeDeveloper = 1 };
