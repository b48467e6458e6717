#pragma once

// The roots of the services that speak both OpenAI-style protocols.
namespace tevra::ServiceRoots {

inline constexpr const char* groq = "https://api.groq.com/openai/v1";
inline constexpr const char* openai = "https://api.openai.com/v1";

}  // namespace tevra::ServiceRoots
